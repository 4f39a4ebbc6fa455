#!/bin/sh
# Fetches the source tarballs of the named Debian packages into the folder $1 and unpacks each there.
# The sandbox is read-only and without package lists, so apt gets a state of its own.
set -eu
folder=$1
shift
state=$(mktemp -d)
mkdir -p "$state/lists/partial" "$state/archives/partial"
sed 's/^deb /deb-src /' /etc/apt/sources.list > "$state/sources.list"
set_up="-q -o APT::Sandbox::User=root -o Dir::State::lists=$state/lists -o Dir::Cache=$state
  -o Dir::Etc::sourcelist=$state/sources.list -o Dir::Etc::sourceparts=/dev/null"
cd "$folder"
# shellcheck disable=SC2086
apt-get $set_up update
# Only the tarballs: the plain form stops at packages whose description file the archive no longer has.
# shellcheck disable=SC2086
apt-get $set_up source --tar-only "$@"
for tarball in *.orig.tar.*; do
  case $tarball in
    *.asc) ;;
    *)
      echo "unpacking $tarball"
      name=${tarball%%_*}
      mkdir -p "$name"
      tar -xf "$tarball" -C "$name" --strip-components=1
      ;;
  esac
done
rm -f ./*.tar.* ./*.dsc ./*.asc
