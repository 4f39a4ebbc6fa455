#!/bin/sh
# Cross-builds FFmpeg's shared libraries with the encoders and containers of the product and nothing else, from /sources
# and the codec libraries in /lame, /libvpx, /onevpl and /opus into /out. With x264 and x265 in /x264 and /x265 they are under the
# GPL, without these under the LGPL. With OpenH264 in /openh264, and with AMD's headers in /amf (the folder that has
# AMF/core/Version.h in it), those encoders are among them.
set -eu
work=/scratch/work
cp -a /sources "$work"
mkdir -p "$work/include"
cp -r /usr/include/ffnvcodec "$work/include"
mkdir "$work/pkgconfig"
cat /usr/lib/*/pkgconfig/ffnvcodec.pc /usr/lib/pkgconfig/ffnvcodec.pc /usr/share/pkgconfig/ffnvcodec.pc \
  2> /dev/null > "$work/pkgconfig/ffnvcodec.pc" || true

# These come last: what says that nothing is built but what is named takes back what was named before it.
options=
if [ -e /x264 ]; then
  options='--enable-gpl --enable-libx264 --enable-libx265 --enable-encoder=libx264,libx265'
fi
if [ -e /openh264 ]; then
  options="$options --enable-libopenh264 --enable-encoder=libopenh264"
fi
if [ -e /amf ]; then
  options="$options --enable-amf --enable-encoder=h264_amf,hevc_amf,av1_amf"
fi

cd "$work"
descriptions=$work/pkgconfig
for library in libvpx onevpl openh264 opus x264 x265; do
  descriptions=$descriptions:/$library/lib/pkgconfig
done
# hevc_qsv does not link without what the parser for HEVC brings.
# The libraries have names of their own: a process has one DLL of a name, and another addon may bring an avcodec of its own.
# shellcheck disable=SC2086
PKG_CONFIG_LIBDIR=$descriptions ./configure --build-suffix=-brisolte \
  --prefix=/out --arch=x86_64 --target-os=mingw32 --enable-cross-compile --cross-prefix=x86_64-w64-mingw32ucrt- \
  --pkg-config=pkg-config --pkg-config-flags=--static \
  --extra-cflags="-I/lame/include -I$work/include -I/amf" \
  --extra-ldflags="-L/lame/lib -static -Wl,--no-insert-timestamp" \
  --extra-libs="-lstdc++" \
  --disable-static --enable-shared --disable-programs --disable-doc --disable-debug \
  --disable-avdevice --disable-avfilter --disable-postproc --disable-network \
  --disable-autodetect --disable-everything --enable-w32threads \
  --enable-libvpx --enable-libmp3lame --enable-libopus \
  --enable-ffnvcodec --enable-nvenc --enable-libvpl \
  --enable-encoder=libvpx_vp8,libvpx_vp9,libmp3lame,libopus,aac,mpeg4,mjpeg,prores,prores_ks \
  --enable-encoder=h264_nvenc,hevc_nvenc,av1_nvenc \
  --enable-encoder=h264_qsv,hevc_qsv,av1_qsv,vp9_qsv,mjpeg_qsv,mpeg2_qsv --enable-parser=hevc \
  --enable-muxer=mp4,mov,webm,matroska,avi,mp3 --enable-protocol=file $options
make -j"$(nproc)"
make install
x86_64-w64-mingw32ucrt-strip /out/bin/*.dll
