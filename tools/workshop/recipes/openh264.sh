#!/bin/sh
# Cross-builds OpenH264 as a static library for FFmpeg, from /sources into /out.
set -eu
host=x86_64-w64-mingw32ucrt
cp -a /sources /scratch/work
cd /scratch/work
make -j"$(nproc)" OS=mingw_nt ARCH=x86_64 CC=$host-gcc CXX=$host-g++ AR=$host-ar PREFIX=/out install-static
# Where FFmpeg's recipe finds it.
sed -i 's|/out|/openh264|' /out/lib/pkgconfig/openh264.pc
