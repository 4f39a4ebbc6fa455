#!/bin/sh
# Cross-builds what the tests need of FFmpeg: ffmpeg-tools.sh SOURCES CODEC_LIBRARIES PREFIX
# ffmpeg.exe and ffprobe.exe read recordings back; static libraries write the files of the stand-in for Media Foundation's
# sink writer. A build of its own, so that what reads a recording shares no library file with what wrote it.
set -eu
sources=$1
libraries=$2
prefix=$3
work=$(mktemp -d)
cp -r "$sources"/. "$work"
# As for the product's own libraries: see ffmpeg.sh.
mkdir "$work/pkgconfig"
cp "$libraries"/lib/pkgconfig/x26[45].pc "$work/pkgconfig"
sed -i "s|^prefix=.*|prefix=$libraries|" "$work"/pkgconfig/*.pc
sed -i 's/-lgcc_s\b/-lgcc_eh/g' "$work/pkgconfig/x265.pc"

cd "$work"
PKG_CONFIG_LIBDIR=$work/pkgconfig ./configure \
  --prefix="$prefix" --arch=x86_64 --target-os=mingw32 --enable-cross-compile --cross-prefix=x86_64-w64-mingw32- \
  --pkg-config=pkg-config --pkg-config-flags=--static \
  --extra-cflags="-I$libraries/include" --extra-ldflags="-L$libraries/lib -static" --extra-libs="-lstdc++" \
  --disable-doc --disable-debug --disable-avdevice --disable-network \
  --disable-autodetect --disable-everything --enable-gpl --enable-w32threads --disable-ffplay \
  --enable-libx264 --enable-libx265 \
  --enable-decoder=h264,hevc,vp8,vp9,mpeg4,mjpeg,prores,mp3float,aac,rawvideo,pcm_s16le,pcm_f32le \
  --enable-parser=h264,hevc,vp8,vp9,mpeg4video,mjpeg,mpegaudio,aac \
  --enable-demuxer=mov,matroska,avi,mp3 \
  --enable-encoder=libx264,libx265,aac,rawvideo,pcm_s16le,pcm_f32le,wrapped_avframe \
  --enable-muxer=mp4,rawvideo,pcm_s16le,pcm_f32le,null \
  --enable-filter=scale,format,aformat,aresample,null,anull,copy,select,trim,crop \
  --enable-protocol=file,pipe
make -j"$(nproc)"
make install-libs install-headers install-progs
x86_64-w64-mingw32-strip "$prefix"/bin/*.exe
# What the libraries link with, in one file each with nothing of this machine's paths left to look up.
cp "$libraries"/lib/libx264.a "$libraries"/lib/libx265.a "$prefix/lib"
