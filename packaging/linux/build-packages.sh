#!/usr/bin/env bash
# Makes the .deb and the archive for other distributions from the installed and stripped programs.
#   build-packages.sh STAGE DIST VERSION
# STAGE holds usr/, and is completed with what both packages contain. SOURCE_DATE_EPOCH is the time of every file.
set -euo pipefail
. "$(dirname "$0")/../../scripts/lib.sh"
at_most 3 "$@"
[ $# -eq 3 ] || usage_error "needs STAGE, DIST and VERSION"
here=$PWD/packaging/linux
cd "$OLDPWD"
stage=$(realpath "$1")
dist=$(realpath "$2")
version=$3
share=$stage/usr/share
: "${SOURCE_DATE_EPOCH:?is the time of every file}"
export SOURCE_DATE_EPOCH LC_ALL=C TZ=UTC
umask 022

man_pages() {
  "$here/make-man-pages.sh" "$share/man" "$version"
}

# The program itself knows its commands and options.
completions() {
  local vantrel=$stage/usr/bin/vantrel
  mkdir -p "$share/bash-completion/completions" "$share/zsh/vendor-completions" "$share/fish/vendor_completions.d"
  "$vantrel" completions bash >"$share/bash-completion/completions/vantrel"
  "$vantrel" completions zsh >"$share/zsh/vendor-completions/_vantrel"
  "$vantrel" completions fish >"$share/fish/vendor_completions.d/vantrel.fish"
}

archive() {
  local name=VantrelBridge-$version-linux-x86_64 folder needed
  folder=$work/$name
  needed=$(objdump -T "$stage"/usr/bin/* | grep -oP 'GLIBC_\K[0-9.]+' | sort -Vu | tail -n 1)
  mkdir "$folder"
  cp -a "$stage/usr" "$folder/"
  for program in VantrelBridgeHID vantrel; do
    sed "s/@needed@/$needed/" "$here/start.sh.in" >"$folder/$program"
    chmod 755 "$folder/$program"
  done
  install -m 644 "$here/README-archive.txt" "$folder/README.txt"
  tar -C "$work" --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner --format=gnu -c "$name" |
    gzip -9n >"$dist/$name.tar.gz"
}

# The libraries that the programs need, as versions of packages.
dependencies() {
  mkdir -p "$work/shlibdeps/debian"
  printf 'Source: vantrelbridge\n\nPackage: vantrelbridge\nArchitecture: amd64\n' >"$work/shlibdeps/debian/control"
  (cd "$work/shlibdeps" && dpkg-shlibdeps -O "$stage"/usr/bin/* 2>/dev/null) | sed -n 's/^shlibs:Depends=//p'
}

# In KiB. Of a folder, each file system says another size.
installed_size() { find "$1" -printf '%y %s\n' | awk '{ size += $1 == "f" ? int(($2 + 1023) / 1024) : 1 } END { print size }'; }

debian_documents() {
  local root=$1/usr/share/doc/vantrelbridge
  python3 "$here/debian_documents.py" copyright >"$root/copyright"
  python3 "$here/debian_documents.py" changelog "$version" | gzip -9n >"$root/changelog.gz"
  # Debian's copyright file has what it says.
  rm "$root/LICENSE.txt"
  install -Dm 644 "$here/vantrelbridge.doc-base" "$1/usr/share/doc-base/vantrelbridge.vantrelbridge"
}

debian_package() {
  local root=$work/deb script
  mkdir "$root"
  cp -a "$stage/usr" "$root/"
  debian_documents "$root"
  mkdir "$root/DEBIAN"
  sed -e "s/@version@/$version/" -e "s/@size@/$(installed_size "$root/usr")/" \
    -e "s/@dependencies@/$(dependencies)/" "$here/control.in" >"$root/DEBIAN/control"
  for script in postinst postrm; do
    install -m 755 "$here/$script" "$root/DEBIAN/$script"
  done
  (cd "$root" && find usr -type f | sort | xargs -d '\n' md5sum >DEBIAN/md5sums)
  dpkg-deb --root-owner-group --threads-max=1 -Zxz --build "$root" "$dist/vantrelbridge_${version}_amd64.deb" >/dev/null
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
man_pages
completions
archive
debian_package
