#!/bin/sh
# Cross-builds the codec libraries that FFmpeg links as static libraries: codec-libraries.sh SOURCES PREFIX
set -eu
sources=$1
prefix=$2
host=x86_64-w64-mingw32
jobs=$(nproc)
work=$(mktemp -d)
cp -r "$sources"/. "$work"

echo "== LAME"
(
  cd "$work/lame"
  ./configure --host=$host --prefix="$prefix" --disable-shared --disable-frontend --disable-decoder
  make -j"$jobs" install
)

echo "== libvpx"
(
  cd "$work/libvpx"
  CROSS=$host- ./configure --target=x86_64-win64-gcc --prefix="$prefix" --disable-shared --enable-static \
    --disable-examples --disable-tools --disable-docs --disable-unit-tests \
    --disable-vp8-decoder --disable-vp9-decoder
  make -j"$jobs" install
)

echo "== x264"
(
  cd "$work/x264"
  ./configure --host=$host --cross-prefix=$host- --prefix="$prefix" --enable-static --disable-cli --disable-opencl
  make -j"$jobs" install
)

echo "== x265"
(
  cd "$work/x265"
  # A tarball has no repository to read the version from; the build reads this file instead, if it finds a git.
  [ -e x265Version.txt ] || printf 'repositorychangeset: tarball\nreleasetagdistance: 0\nreleasetag: 4.1\n' > x265Version.txt
  cmake -S source -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_SYSTEM_PROCESSOR=x86_64 \
    -DCMAKE_C_COMPILER=$host-gcc -DCMAKE_CXX_COMPILER=$host-g++ -DCMAKE_RC_COMPILER=$host-windres \
    -DCMAKE_ASM_NASM_FLAGS=-w-macro-params-legacy -DGIT_EXECUTABLE=/bin/true \
    -DENABLE_SHARED=OFF -DENABLE_CLI=OFF
  cmake --build build --target install
)
