#!/bin/bash
# Inside the build root: a display, a sound server and a Wine prefix of this run's own, then the program.
# session.sh PROGRAM [ARGUMENT ...], with /template (the prefix to start from) and /output (for the program's output).
# Everything started here ends with the sandbox.
set -u

wait_for() { # DESCRIPTION COMMAND...: until the command succeeds, ten seconds at most
  local what=$1 tries=0
  shift
  until "$@"; do
    if [ $((tries += 1)) -gt 1000 ]; then
      echo "the $what did not start" >&2
      exit 125
    fi
    sleep 0.01
  done
}

display() {
  mkdir -p /tmp/.X11-unix
  # Its socket is a file in this run's own /tmp, so that any number of runs can use the same display number.
  Xvfb :0 -screen 0 "${BRISOLTE_SCREEN}x24" -nolisten tcp -nolisten local > /output/xvfb.log 2>&1 &
  wait_for display test -S /tmp/.X11-unix/X0
  export DISPLAY=:0
  # With the server's own compositing each window keeps its picture whole while others cover it, as on Windows;
  # without it a copy of a covered window comes back with holes.
  xcompmgr -a > /output/xcompmgr.log 2>&1 &
}

sound() {
  export XDG_RUNTIME_DIR=/run/user PULSE_SERVER=unix:/run/pulse.socket
  mkdir -p -m 700 "$XDG_RUNTIME_DIR"
  # A null sink that may rewind works in blocks of two seconds, and its monitor delivers the first of them more than a
  # second late.
  pulseaudio -n --daemonize=no --exit-idle-time=-1 --disable-shm=yes \
    --load='module-native-protocol-unix socket=/run/pulse.socket auth-anonymous=1' \
    --load='module-null-sink norewinds=1 sink_name=speaker sink_properties=device.description=Speaker' \
    --load='module-null-sink norewinds=1 sink_name=room sink_properties=device.description=Room' \
    --load='module-remap-source source_name=microphone master=room.monitor source_properties=device.description=Microphone' \
    > /output/pulseaudio.log 2>&1 &
  wait_for 'sound server' test -S /run/pulse.socket
}

prefix() {
  export WINEPREFIX=/prefix
  cp -a /template/*.reg /template/.update-timestamp /template/dosdevices "$WINEPREFIX"
  cp -a /template/drive_c/users "$WINEPREFIX/drive_c"
  # Every Windows shares its disks with its administrators under such names.
  mkdir -p "$WINEPREFIX/dosdevices/unc/localhost"
  ln -s "$WINEPREFIX/drive_c" "$WINEPREFIX/dosdevices/unc/localhost/C\$"
  # Read when the session's first process starts, and never again.
  printf '\n[Control Panel\\\\Desktop]\n"LogPixels"=dword:%08x\n' "$BRISOLTE_DPI" >> "$WINEPREFIX/user.reg"
  if [ -n "${BRISOLTE_STANDINS:-}" ]; then
    local class
    for class in GraphicsCaptureItem Direct3D11CaptureFramePool; do
      printf '\n[Software\\\\Microsoft\\\\WindowsRuntime\\\\ActivatableClassId\\\\Windows.Graphics.Capture.%s]\n"DllPath"="%s"\n' \
        "$class" 'C:\\windows\\system32\\GraphicsCapture.dll' >> "$WINEPREFIX/system.reg"
    done
    export WINEDLLOVERRIDES="d3d11,graphicscapture,mf,mfreadwrite=n,b;$WINEDLLOVERRIDES"
  fi
}

# The clock that Wine's processes see says what the file does. What counts from any beginning, and the times of files, stay
# those of the machine. The file is read once a second only: Wine measures a pause by two looks at the clock, and when that is
# set back between them the pause becomes as long as the step. Reading the file at each look makes the gap wide enough to be hit.
clock() {
  echo +0 > /tmp/clock
  export FAKETIME_TIMESTAMP_FILE=/tmp/clock FAKETIME_CACHE_DURATION=1 FAKETIME_DONT_FAKE_MONOTONIC=1 NO_FAKE_STAT=1
  gcc -shared -fPIC -O2 -o /tmp/short-pauses.so "$(dirname "$0")/short-pauses.c"
  export LD_PRELOAD="/tmp/short-pauses.so /usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1"
}

main() {
  export WINEDLLOVERRIDES="mscoree,mshtml="
  # A copy of the screen is a reply of several megabytes. Its memory would be fresh from the system each time, which costs
  # more than the copy itself. And with an arena of memory for each thread a process that starts many of them, as every
  # recording does, grows for hours: what one thread has freed does not serve another.
  export GLIBC_TUNABLES=glibc.malloc.arena_max=1:glibc.malloc.mmap_threshold=1073741824:glibc.malloc.trim_threshold=1073741824
  [ "$BRISOLTE_SCREEN" = none ] || display
  sound
  prefix
  [ -z "${BRISOLTE_CLOCK:-}" ] || clock
  # To files: Node.js for Windows fails with EBADF when its standard output is a pipe of Wine's.
  wine "$@" > /output/stdout 2> /output/stderr < /dev/null
}

# Read to its end before anything runs: who edits this file meanwhile changes the next run, not this one.
main "$@"; exit
