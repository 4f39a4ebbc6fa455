#!/bin/sh
# Cross-builds libvpx as a static library for FFmpeg, from /sources into /out.
set -eu
cp -a /sources /scratch/work
cd /scratch/work
CROSS=x86_64-w64-mingw32ucrt- ./configure --target=x86_64-win64-gcc --prefix=/out --disable-shared --enable-static \
  --disable-examples --disable-tools --disable-docs --disable-unit-tests \
  --disable-vp8-decoder --disable-vp9-decoder
make -j"$(nproc)" install
# Where FFmpeg's recipe finds it.
sed -i 's|^prefix=.*|prefix=/libvpx|' /out/lib/pkgconfig/*.pc
