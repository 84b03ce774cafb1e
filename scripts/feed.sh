#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# make feed: the four packages of build/packages/ as a signed apt repository
# in build/feed/ (a flat repository: Packages, Packages.gz, Release,
# Release.gpg, InRelease), for
#   deb [signed-by=<build/feed-key/qvs-feed.gpg>] file:<build/feed> ./
# The signing key is made for this purpose (gpg --batch, no passphrase) and
# kept with its public keyring in build/feed-key/, never in the tree; it is
# made once and reused until `make clean`.
set -euo pipefail
cd "$(dirname "$0")/.."
feed=build/feed
keydir=$PWD/build/feed-key
export GNUPGHOME=$keydir/gnupg
uid="qvs_utils test feed <qvs-utils@example.com>"

debs=(build/packages/*.deb)
[ ${#debs[@]} -eq 4 ] && [ -f "${debs[0]}" ] || { echo "feed: expected four packages in build/packages (make package)" >&2; exit 1; }

if [ ! -s "$keydir/qvs-feed.gpg" ]; then
  rm -rf "$keydir"
  mkdir -p "$GNUPGHOME"
  chmod 700 "$keydir" "$GNUPGHOME"
  gpg --batch --quiet --passphrase '' --quick-gen-key "$uid" ed25519 sign never 2>/dev/null
  gpg --batch --export "$uid" > "$keydir/qvs-feed.gpg"
fi
fpr=$(gpg --batch --with-colons --list-secret-keys "$uid" | awk -F: '$1=="fpr" {print $10; exit}')

rm -rf "$feed"
mkdir -p "$feed"
cp "${debs[@]}" "$feed/"
(
  cd "$feed"
  apt-ftparchive packages . > Packages
  gzip -9nk Packages
  apt-ftparchive \
    -o APT::FTPArchive::Release::Origin=qvs_utils \
    -o APT::FTPArchive::Release::Label=qvs_utils \
    -o APT::FTPArchive::Release::Suite=stable \
    -o APT::FTPArchive::Release::Codename=qvs \
    -o APT::FTPArchive::Release::Architectures="amd64 armhf" \
    -o APT::FTPArchive::Release::Description="libqvs_utils packages" \
    release . > ../Release.new  # outside: it would list itself
  mv ../Release.new Release
  gpg --batch --quiet --yes --local-user "$fpr" --armor --detach-sign -o Release.gpg Release
  gpg --batch --quiet --yes --local-user "$fpr" --clearsign -o InRelease Release
)
gpgv --keyring "$keydir/qvs-feed.gpg" "$feed/InRelease" 2>/dev/null \
  || { echo "feed: InRelease does not verify with the feed key" >&2; exit 1; }
echo "feed: $(grep -c '^Package:' "$feed/Packages") packages in $feed, signed by $fpr"
echo "feed: deb [signed-by=$keydir/qvs-feed.gpg] file:$PWD/$feed ./"
