#!/bin/sh
# Cross-builds what the tests need of FFmpeg, from /sources and the codec libraries in /x264 and /x265 into /out: ffmpeg.exe
# and ffprobe.exe, which read recordings back, and static libraries, which write the files of the stand-in for Media
# Foundation's sink writer. A build of its own, so that what reads a recording shares no library file with what wrote it.
set -eu
cp -a /sources /scratch/work

cd /scratch/work
PKG_CONFIG_LIBDIR=/x264/lib/pkgconfig:/x265/lib/pkgconfig ./configure \
  --prefix=/out --arch=x86_64 --target-os=mingw32 --enable-cross-compile --cross-prefix=x86_64-w64-mingw32ucrt- \
  --pkg-config=pkg-config --pkg-config-flags=--static \
  --extra-ldflags='-static -Wl,--no-insert-timestamp' --extra-libs='-lstdc++' \
  --disable-doc --disable-debug --disable-avdevice --disable-network \
  --disable-autodetect --disable-everything --enable-gpl --enable-w32threads --disable-ffplay \
  --enable-libx264 --enable-libx265 \
  --enable-decoder=h264,hevc,vp8,vp9,mpeg4,mjpeg,prores,mp3float,aac,opus,rawvideo,pcm_s16le,pcm_f32le \
  --enable-parser=h264,hevc,vp8,vp9,mpeg4video,mjpeg,mpegaudio,aac,opus \
  --enable-demuxer=mov,matroska,avi,mp3 \
  --enable-encoder=libx264,libx265,aac,rawvideo,pcm_s16le,pcm_f32le,wrapped_avframe \
  --enable-muxer=mp4,rawvideo,pcm_s16le,pcm_f32le,null \
  --enable-filter=scale,format,aformat,aresample,null,anull,copy,select,trim,crop \
  --enable-protocol=file,pipe
make -j"$(nproc)"
make install-libs install-headers install-progs
x86_64-w64-mingw32ucrt-strip /out/bin/*.exe
# What the libraries link with, in one file each with nothing of this machine's paths left to look up.
cp /x264/lib/libx264.a /x265/lib/libx265.a /out/lib
