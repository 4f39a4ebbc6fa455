#!/bin/sh
# Cross-builds the dispatcher of Intel's encoders as a static library for FFmpeg, from /sources into /out. It finds the
# driver's own library on the machine that records.
set -eu
host=x86_64-w64-mingw32ucrt
cp -a /sources /scratch/work
cd /scratch/work
# It would also take a library of the driver's name out of the current directory and out of any folder of PATH, where
# everybody can put one. Drivers are in the system's driver store, and old ones in its system folder.
sed -i -e '/^ *GetSearchPathsCurrentDir(searchDirList);$/d' -e '/^ *ParseEnvSearchPaths(L"PATH", searchDirList);$/d' \
  dispatcher/vpl/mfx_dispatcher_vpl_loader.cpp
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/out \
  -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_SYSTEM_PROCESSOR=x86_64 \
  -DCMAKE_C_COMPILER=$host-gcc -DCMAKE_CXX_COMPILER=$host-g++ -DCMAKE_RC_COMPILER=$host-windres \
  -DBUILD_SHARED_LIBS=OFF -DBUILD_TOOLS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_PREVIEW=OFF
cmake --build build --target install
# Where FFmpeg's recipe finds it.
sed -i 's|^prefix=.*|prefix=/onevpl|' /out/lib/pkgconfig/vpl.pc
