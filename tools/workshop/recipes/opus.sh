#!/bin/sh
# Cross-builds Opus as a static library for FFmpeg, from /sources into /out.
set -eu
host=x86_64-w64-mingw32ucrt
cp -a /sources /scratch/work
cd /scratch/work
./configure --host=$host --prefix=/out --disable-shared --disable-doc --disable-extra-programs
make -j"$(nproc)" install
# Where FFmpeg's recipe finds it.
sed -i 's|^prefix=.*|prefix=/opus|' /out/lib/pkgconfig/opus.pc
