#!/bin/sh
# Cross-builds ffmpeg.exe and ffprobe.exe with which the tests read recordings back: ffmpeg-tools.sh SOURCES PREFIX
# A build of its own, with decoders only, so that what reads a recording shares no library file with what wrote it.
set -eu
sources=$1
prefix=$2
work=$(mktemp -d)
cp -r "$sources"/. "$work"

cd "$work"
./configure \
  --prefix="$prefix" --arch=x86_64 --target-os=mingw32 --enable-cross-compile --cross-prefix=x86_64-w64-mingw32- \
  --extra-ldflags=-static --disable-doc --disable-debug --disable-avdevice --disable-network \
  --disable-autodetect --disable-everything --enable-w32threads --disable-ffplay \
  --enable-decoder=h264,hevc,vp8,vp9,mpeg4,mjpeg,prores,mp3float,rawvideo,pcm_s16le,pcm_f32le \
  --enable-parser=h264,hevc,vp8,vp9,mpeg4video,mjpeg,mpegaudio \
  --enable-demuxer=mov,matroska,avi,mp3 \
  --enable-encoder=rawvideo,pcm_s16le,pcm_f32le,wrapped_avframe \
  --enable-muxer=rawvideo,pcm_s16le,pcm_f32le,null \
  --enable-filter=scale,format,aformat,aresample,null,anull,copy,select,trim,crop \
  --enable-protocol=file,pipe
make -j"$(nproc)"
make install-progs
x86_64-w64-mingw32-strip "$prefix"/bin/*.exe
