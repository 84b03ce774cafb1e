#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# build-image.sh <out dir>: the booted test target's image, built once and
# kept. An armhf Debian root unpacked by mmdebstrap from image.packages (no
# package scripts run, so no binfmt is needed), finished here on the host:
# the package database filled in from the packages' own control data (dpkg
# inside can then install ours and check its dependencies), busybox applets
# for every tool no package brings, module dependencies, users and groups.
# Out: rootfs.ext4, vmlinuz, initrd (loads the block, ext4 and 9p modules),
# stamp. Rebuilt only when the package list or this recipe changes.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
out=$1
recipe=$(cat "$here/image.packages" "$here/build-image.sh" "$here/init" "$here/initrd-init" | sha256sum | cut -d' ' -f1)
if [ -f "$out/stamp" ] && [ "$(cat "$out/stamp")" = "$recipe" ] &&
   [ -f "$out/rootfs.ext4" ] && [ -f "$out/vmlinuz" ] && [ -f "$out/initrd" ]; then
  echo "target image: cached ($out)"
  exit 0
fi
start=$(date +%s)
rm -rf "$out"
mkdir -p "$out"
root=$out/root
packages=$(grep -v '^#' "$here/image.packages" | grep -v '^$' | paste -sd,)

# The same Debian archive the host installs from, binary indices only and
# without the security suite: its index, updated often, is caught mid-sync
# now and then, and a test fixture needs no security updates.
sources() {
  local f
  for f in /etc/apt/sources.list.d/*.sources; do
    [ -f "$f" ] && awk -v RS= -v ORS='\n\n' '!/Suites:[^\n]*-security/' "$f" | sed -E 's/^Types:.*/Types: deb/'
  done
  [ -f /etc/apt/sources.list ] && grep -E '^deb ' /etc/apt/sources.list | grep -v -- '-security'
  return 0
}
[ -n "$(sources)" ] || { echo "target image: no apt sources on this host" >&2; exit 1; }
sources | mmdebstrap --mode=root --arch=armhf --variant=extract --include="$packages" \
  --skip=download/empty --skip=cleanup/apt bookworm "$root" -

# The package database: every unpacked package installed as far as dpkg
# is concerned (its control fields and file list), then the packages go.
db=$root/var/lib/dpkg
mkdir -p "$db/info" "$db/updates" "$db/triggers"
: > "$db/status"
for deb in "$root"/var/cache/apt/archives/*.deb; do
  control=$(dpkg-deb -f "$deb")
  field() { sed -n "s/^$1: //p" <<<"$control"; }
  list=$(field Package)
  [ "$(field Multi-Arch)" = same ] && list=$list:$(field Architecture)
  sed '/^Package:/a Status: install ok installed' <<<"$control" >> "$db/status"
  echo >> "$db/status"
  dpkg-deb --fsys-tarfile "$deb" | tar -t | sed -e 's|^\./|/|' -e 's|/$||' -e 's|^$|/.|' > "$db/info/$list.list"
done
rm -f "$root"/var/cache/apt/archives/*.deb "$root"/var/lib/apt/lists/*_Packages* 2>/dev/null || true
: > "$db/available"

# busybox for every tool no package brought (the gateway's own shell and
# small tools); busybox lists its applets under qemu-user here.
while read -r applet; do
  [ -e "$root/$applet" ] || [ -L "$root/$applet" ] || ln -s /bin/busybox "$root/$applet"
done < <(qemu-arm -L "$root" "$root/bin/busybox" --list-full)
mkdir -p "$root/mnt" "$root/opt" "$root/srv"
# The alternatives a package script would have set.
for t in iptables iptables-save iptables-restore ip6tables ip6tables-save ip6tables-restore; do
  ln -sf xtables-legacy-multi "$root/usr/sbin/$t"
done
cp "$root/usr/share/base-passwd/passwd.master" "$root/etc/passwd"
cp "$root/usr/share/base-passwd/group.master" "$root/etc/group"
echo qvs-target > "$root/etc/hostname"
rm -f "$root/linuxrc"
install -m 0755 "$here/init" "$root/sbin/qvs-target-init"
# On the target the build tree's test commands, recorded for qemu-user, run
# the program itself.
mkdir -p "$root/usr/local/bin"
printf '#!/bin/sh\nexec "$@"\n' > "$root/usr/local/bin/qemu-arm"
chmod 0755 "$root/usr/local/bin/qemu-arm"

kver=$(basename "$(ls -d "$root"/lib/modules/*)")
# A virtual board needs no drivers for real hardware, and nobody reads the
# documentation inside: both go, for a smaller image made faster.
mods=$root/lib/modules/$kver/kernel
find "$mods/drivers" -mindepth 1 -maxdepth 1 ! -name net ! -name virtio ! -name block ! -name char -exec rm -rf {} +
rm -rf "$mods/sound" "$root"/usr/share/{doc,man,locale,info}
depmod -b "$root" "$kver"
cp "$root/boot/vmlinuz-$kver" "$out/vmlinuz"

# initrd: busybox and the modules needed to reach the root disk and the
# shares, loaded in dependency order by initrd-init.
ird=$out/initrd.d
mkdir -p "$ird/bin" "$ird/dev" "$ird/proc" "$ird/sys" "$ird/newroot" "$ird/modules" "$ird/lib/arm-linux-gnueabihf"
cp "$root/bin/busybox" "$ird/bin/busybox"
cp -L "$root/lib/ld-linux-armhf.so.3" "$ird/lib/"
for lib in $(arm-linux-gnueabihf-readelf -d "$root/bin/busybox" | sed -n 's/.*Shared library: \[\(.*\)\]/\1/p'); do
  cp -L "$root/lib/arm-linux-gnueabihf/$lib" "$ird/lib/arm-linux-gnueabihf/"
done
ln -s busybox "$ird/bin/sh"
install -m 0755 "$here/initrd-init" "$ird/init"
: > "$ird/modules/order"
for m in virtio_mmio virtio_blk ext4 9pnet_virtio 9p overlay; do
  modprobe -d "$root" -S "$kver" --show-depends "$m" | while read -r kind path _; do
    [ "$kind" = insmod ] || continue
    f=$(basename "$path")
    grep -qx "$f" "$ird/modules/order" && continue
    cp "$path" "$ird/modules/$f"
    echo "$f" >> "$ird/modules/order"
  done
done
(cd "$ird" && find . | cpio --quiet -o -H newc | gzip -1) > "$out/initrd"
rm -rf "$ird" "$root/boot"

# Root file system with room for the package install and the tests' writes.
size_mb=$(( $(du -sm "$root" | cut -f1) + 256 ))
mke2fs -q -t ext4 -L qvs-target -d "$root" "$out/rootfs.ext4" "${size_mb}M"
rm -rf "$root"
echo "$recipe" > "$out/stamp"
echo "target image: built in $(( $(date +%s) - start )) s ($out, ${size_mb} MB)"
