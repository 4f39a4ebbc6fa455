#!/bin/sh
# Unpacks the headers of FFmpeg that another series of Debian has into /out: ffmpeg-headers.sh SERIES
# The sandbox is read-only and without package lists, so apt gets a state of its own.
set -eu
state=$TMPDIR/state
mkdir -p "$state/lists/partial" "$state/archives/partial"
echo "deb http://deb.debian.org/debian $1 main" > "$state/sources.list"
# A mirror may lag behind with the lists of the unstable branch, whose signature then counts as expired. Nothing that is
# fetched here is shipped or run.
set_up="-q -o Acquire::Check-Valid-Until=false -o APT::Sandbox::User=root -o Dir::State=$state -o Dir::Cache=$state -o Dir::State::status=/dev/null
  -o Dir::Etc::sourcelist=$state/sources.list -o Dir::Etc::sourceparts=/dev/null"
# shellcheck disable=SC2086
apt-get $set_up update
cd "$TMPDIR"
# shellcheck disable=SC2086
apt-get $set_up download libavcodec-dev libavformat-dev libavutil-dev libswresample-dev libswscale-dev
for package in ./*.deb; do
  dpkg-deb -x "$package" unpacked
done
mv unpacked/usr/include/*/* /out
for package in libav*-dev_*.deb; do
  basename "$package"
done > /out/packages
