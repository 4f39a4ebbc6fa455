#!/bin/sh
# Cross-builds LAME as a static library for FFmpeg, from /sources into /out.
set -eu
host=x86_64-w64-mingw32ucrt
cp -a /sources /scratch/work
cd /scratch/work
./configure --host=$host --prefix=/out --disable-shared --disable-frontend --disable-decoder
make -j"$(nproc)" install
