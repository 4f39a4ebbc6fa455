#!/bin/sh
# Cross-builds FFmpeg's shared libraries with the encoders and containers of the product and nothing else, from /sources
# and the codec libraries in /lame, /libvpx, /onevpl, /x264 and /x265 into /out. With AMD's headers in /amf (the folder that
# has AMF/core/Version.h in it) AMD's encoders are among them.
set -eu
work=/scratch/work
cp -a /sources "$work"
mkdir -p "$work/include"
cp -r /usr/include/ffnvcodec "$work/include"
mkdir "$work/pkgconfig"
cat /usr/lib/*/pkgconfig/ffnvcodec.pc /usr/lib/pkgconfig/ffnvcodec.pc /usr/share/pkgconfig/ffnvcodec.pc \
  2> /dev/null > "$work/pkgconfig/ffnvcodec.pc" || true

amf=
if [ -e /amf ]; then
  amf='--enable-amf --enable-encoder=h264_amf,hevc_amf,av1_amf'
fi

cd "$work"
descriptions=$work/pkgconfig
for library in libvpx onevpl x264 x265; do
  descriptions=$descriptions:/$library/lib/pkgconfig
done
# hevc_qsv does not link without what the parser for HEVC brings.
# The libraries have names of their own: a process has one DLL of a name, and another addon may bring an avcodec of its own.
# shellcheck disable=SC2086
PKG_CONFIG_LIBDIR=$descriptions ./configure $amf --build-suffix=-brisolte \
  --prefix=/out --arch=x86_64 --target-os=mingw32 --enable-cross-compile --cross-prefix=x86_64-w64-mingw32- \
  --pkg-config=pkg-config --pkg-config-flags=--static \
  --extra-cflags="-I/lame/include -I$work/include -I/amf" \
  --extra-ldflags="-L/lame/lib -static -Wl,--no-insert-timestamp" \
  --extra-libs="-lstdc++" \
  --disable-static --enable-shared --disable-programs --disable-doc --disable-debug \
  --disable-avdevice --disable-avfilter --disable-postproc --disable-network \
  --disable-autodetect --disable-everything --enable-gpl --enable-w32threads \
  --enable-libx264 --enable-libx265 --enable-libvpx --enable-libmp3lame \
  --enable-ffnvcodec --enable-nvenc --enable-libvpl \
  --enable-encoder=libx264,libx265,libvpx_vp8,libvpx_vp9,libmp3lame,mpeg4,mjpeg,prores,prores_ks \
  --enable-encoder=h264_nvenc,hevc_nvenc,av1_nvenc \
  --enable-encoder=h264_qsv,hevc_qsv,av1_qsv,vp9_qsv,mjpeg_qsv,mpeg2_qsv --enable-parser=hevc \
  --enable-muxer=mp4,mov,webm,matroska,avi,mp3 --enable-protocol=file
make -j"$(nproc)"
make install
x86_64-w64-mingw32-strip /out/bin/*.dll
