#!/bin/sh
# Fetches the source of a Debian package: fetch-source.sh PACKAGE FILE SHA256 [FILE SHA256 ...]
# /out/tarballs gets the files, /out/source what they unpack to, with Debian's patches applied in the order of their series.
set -eu
package=$1
shift
case $package in
  lib*) pool=main/$(echo "$package" | cut -c 1-4)/$package ;;
  *) pool=main/$(echo "$package" | cut -c 1)/$package ;;
esac
debian=http://deb.debian.org/debian/pool
security=http://security.debian.org/debian-security/pool/updates
# Has what Debian has replaced since.
past=http://snapshot.debian.org/archive/debian/20261122T000000Z/pool

fetch() { # FILE SHA256: from the first place that has the file with this hash
  for place in $debian $security $past; do
    if /usr/lib/apt/apt-helper -o APT::Sandbox::User=root download-file "$place/$pool/$1" "$1" "SHA256:$2"; then
      return
    fi
  done
  echo "Debian has no $1 any more: tools/workshop/recipes/sources.list has to name a newer version"
  return 1
}

mkdir /out/tarballs /out/source
cd /out/tarballs
while [ $# -gt 0 ]; do
  fetch "$1" "$2"
  case $1 in
    *.orig.tar.*) tar -xf "$1" -C /out/source --strip-components=1 --no-same-owner ;;
    *)
      # Where the upstream has such a folder, it is not Debian's.
      rm -rf /out/source/debian
      tar -xf "$1" -C /out/source --no-same-owner
      ;;
  esac
  shift 2
done

patches=/out/source/debian/patches
if [ -e $patches/series ] && ls /out/tarballs/*.orig.tar.* > /dev/null 2>&1; then
  sed 's/[[:space:]]*#.*//' $patches/series | while read -r name _; do
    if [ -n "$name" ]; then
      echo "$name"
      patch -d /out/source -p1 --batch --fuzz=0 --no-backup-if-mismatch -i "$patches/$name"
    fi
  done
fi
# One time for all files: make would take a patched file for newer than what has been made from it.
find /out -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
