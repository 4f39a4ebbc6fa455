#!/bin/sh
# Cross-builds x264 as a static library for FFmpeg, from /sources into /out.
set -eu
host=x86_64-w64-mingw32ucrt
cp -a /sources /scratch/work
cd /scratch/work
./configure --host=$host --cross-prefix=$host- --prefix=/out --enable-static --disable-cli --disable-opencl
make -j"$(nproc)" install
# Where FFmpeg's recipe finds it.
sed -i 's|^prefix=.*|prefix=/x264|' /out/lib/pkgconfig/*.pc
