#!/usr/bin/env bash
# run.sh <folder with what wine_suite made> <work folder>: runs in_root.sh on it under Wine. Wine for
# 32-bit programs stands in a 32-bit Debian of its own, in <work folder>/root, which stays for the next time.
set -euo pipefail
[ "$(id -u)" = 0 ] || exec sudo "$0" "$@"   # to make a root, and to enter it
stage=$(realpath "$1")
mkdir -p "$2"
root=$(realpath "$2")/root
here=$(realpath "$(dirname "$0")")

# In a namespace of its own: mounts and processes end with it, whatever happens.
if [ "${3-}" != inside ]; then
  exec unshare --mount --pid --fork --kill-child "$0" "$stage" "$2" inside
fi

enter() { env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin "${@:2}" chroot "$root" bash -c "$1"; }

mount_system() {
  mount -t proc proc "$root/proc"
  mount --rbind /dev "$root/dev"
}

if [ ! -e "$root/ready" ]; then
  echo "== making $root" >&2
  rm -rf "$root"
  # The mirror that apt uses here, or the default one.
  mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Label: Debian' 'Codename: bookworm' | sort -u |
    head -n 1)
  debootstrap --arch=i386 --variant=minbase bookworm "$root" ${mirror:+"$mirror"} > "$2/root.log"
  mount_system
  enter 'apt-get install -q -y --no-install-recommends wine wine32' DEBIAN_FRONTEND=noninteractive \
    >> "$2/root.log"
  touch "$root/ready"
else
  mount_system
fi

rm -rf "$root/ppl"
cp -r "$stage" "$root/ppl"
cp "$here/in_root.sh" "$here/service.cmd" "$root/ppl"
enter 'cd /ppl && exec bash in_root.sh'
