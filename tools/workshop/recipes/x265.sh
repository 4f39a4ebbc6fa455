#!/bin/sh
# Cross-builds x265 as a static library for FFmpeg, from /sources into /out.
set -eu
host=x86_64-w64-mingw32ucrt
cp -a /sources /scratch/work
cd /scratch/work
# A tarball has no repository to read the version from; the build reads this file instead, if it finds a git.
[ -e x265Version.txt ] || printf 'repositorychangeset: tarball\nreleasetagdistance: 0\nreleasetag: 4.1\n' > x265Version.txt
cmake -S source -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/out \
  -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_SYSTEM_PROCESSOR=x86_64 \
  -DCMAKE_C_COMPILER=$host-gcc -DCMAKE_CXX_COMPILER=$host-g++ -DCMAKE_RC_COMPILER=$host-windres \
  -DCMAKE_ASM_NASM_FLAGS=-w-macro-params-legacy -DGIT_EXECUTABLE=/bin/true \
  -DENABLE_SHARED=OFF -DENABLE_CLI=OFF
cmake --build build --target install
# Where FFmpeg's recipe finds it. And it asks for the compiler's runtime as a DLL, which would have to lie beside ours.
sed -i 's|^prefix=.*|prefix=/x265|; s/-lgcc_s\b/-lgcc_eh/g' /out/lib/pkgconfig/x265.pc
