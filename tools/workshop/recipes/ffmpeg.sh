#!/bin/sh
# Cross-builds FFmpeg's shared libraries with the encoders and containers of the product and nothing else:
# ffmpeg.sh SOURCES CODEC_LIBRARIES PREFIX
set -eu
sources=$1
libraries=$2
prefix=$3
work=$(mktemp -d)
cp -r "$sources"/. "$work"
mkdir -p "$work/include"
cp -r /usr/include/ffnvcodec "$work/include"
# The codec libraries say where they were installed when they were built; that folder has been renamed since.
mkdir "$work/pkgconfig"
cp "$libraries"/lib/pkgconfig/*.pc "$work/pkgconfig"
sed -i "s|^prefix=.*|prefix=$libraries|" "$work"/pkgconfig/*.pc
# x265 asks for the compiler's runtime as a DLL, which would have to lie beside ours.
sed -i 's/-lgcc_s\b/-lgcc_eh/g' "$work/pkgconfig/x265.pc"
cat /usr/lib/*/pkgconfig/ffnvcodec.pc /usr/lib/pkgconfig/ffnvcodec.pc /usr/share/pkgconfig/ffnvcodec.pc \
  2> /dev/null > "$work/pkgconfig/ffnvcodec.pc" || true

cd "$work"
PKG_CONFIG_LIBDIR=$work/pkgconfig ./configure \
  --prefix="$prefix" --arch=x86_64 --target-os=mingw32 --enable-cross-compile --cross-prefix=x86_64-w64-mingw32- \
  --pkg-config=pkg-config --pkg-config-flags=--static \
  --extra-cflags="-I$libraries/include -I$work/include" --extra-ldflags="-L$libraries/lib -static" \
  --extra-libs="-lstdc++" \
  --disable-static --enable-shared --disable-programs --disable-doc --disable-debug \
  --disable-avdevice --disable-avfilter --disable-postproc --disable-network \
  --disable-autodetect --disable-everything --enable-gpl --enable-w32threads \
  --enable-libx264 --enable-libx265 --enable-libvpx --enable-libmp3lame \
  --enable-ffnvcodec --enable-nvenc --enable-mediafoundation \
  --enable-encoder=libx264,libx265,libvpx_vp8,libvpx_vp9,libmp3lame,mpeg4,mjpeg,prores,prores_ks \
  --enable-encoder=h264_nvenc,hevc_nvenc,av1_nvenc,h264_mf,hevc_mf \
  --enable-muxer=mp4,mov,webm,matroska,avi,mp3 --enable-protocol=file
make -j"$(nproc)"
make install
x86_64-w64-mingw32-strip "$prefix"/bin/*.dll
cp COPYING.GPLv2 COPYING.GPLv3 LICENSE.md "$prefix"
