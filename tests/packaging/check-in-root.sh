#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the Debian package into a bare system of its own with only what it depends on, runs both programs there,
# removes it, and fails when one of them does not run or a file is left. The package must have been built on that
# release of Debian. Needs root, the network and debootstrap; takes some minutes.
#
#   check-in-root.sh RELEASE PACKAGE.deb [FOLDER]
#
#   RELEASE  bookworm or trixie
#   FOLDER   a bare root of that release, which is used as it is and kept; otherwise one is made and deleted
set -euo pipefail
release=$1 package=$2 root=${3:-}

mounted=()
clean_up() {
    local folder
    for folder in "${mounted[@]}"; do
        umount "$folder"
    done
    # One that is still mounted would be deleted with the root.
    if [ -n "${made:-}" ]; then
        rm -rf --one-file-system "$made"
    fi
}
trap clean_up EXIT
trap 'exit 143' HUP INT TERM

if [ -z "$root" ]; then
    made=$(mktemp -d)
    root=$made
    debootstrap --variant=minbase "$release" "$root"
fi
if ! mountpoint -q "$root/proc"; then
    mount -t proc proc "$root/proc"
    mounted+=("$root/proc")
fi

inside() {
    chroot "$root" env -i HOME=/root LANG=C.UTF-8 TERM=dumb DEBIAN_FRONTEND=noninteractive \
        PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "$@"
}
fail() {
    echo "check-in-root: $*" >&2
    exit 1
}

# Fails when a program that shows a window ends by itself, or says that something could not be loaded. It may say that
# there is no sound, since a bare system has no sound server.
runs() {
    local status=0
    inside timeout 5 "$@" >"$root/tmp/output" 2>&1 || status=$?
    cat "$root/tmp/output"
    [ "$status" -eq 124 ] || fail "$* ended with $status"
    ! grep -iE 'could not (load|find)|failed to load' "$root/tmp/output" || fail "$* complained"
}

echo "== install"
cp "$package" "$root/tmp/ostrine.deb"
inside apt-get update
before=$(inside dpkg-query -W -f '${Package}\n')
inside apt-get install -y --no-install-recommends /tmp/ostrine.deb
inside dpkg --audit
files=$(inside dpkg-query -L ostrine)
for plugin in platforms/libqxcb.so platforms/libqwayland-generic.so multimedia/libffmpegmediaplugin.so; do
    find "$root/usr/lib" -path "*/qt6/plugins/$plugin" | grep . || fail "Qt's plugin $plugin is not there"
done

echo "== the programs, off-screen"
runs env QT_QPA_PLATFORM=offscreen ostrine
runs env QT_QPA_PLATFORM=offscreen ostrine-tools
inside ostrine-tools tokens /usr/share/ostrine/tokens
inside ostrine-tools sessions

echo "== remove"
# The only traces a user leaves are outside the package: the journals, of which none was begun here.
inside apt-get purge -y ostrine
while read -r path; do
    if [ ! -d "$root$path" ] && { [ -e "$root$path" ] || [ -L "$root$path" ]; }; then
        fail "$path is left"
    fi
done <<<"$files"
left=$(find "$root" -xdev -iname '*ostrine*' -not -path "$root/tmp/*" -not -path "$root/root/*" \
    -not -path "$root/var/cache/*" -not -path "$root/var/log/*")
[ -z "$left" ] || fail "left: $left"

echo "== the programs on a virtual screen"
inside apt-get install -y --no-install-recommends xvfb xauth /tmp/ostrine.deb
runs xvfb-run -a env QT_QPA_PLATFORM=xcb ostrine
runs xvfb-run -a env QT_QPA_PLATFORM=xcb ostrine-tools
inside apt-get purge -y ostrine
rm "$root/tmp/ostrine.deb" "$root/tmp/output"

after=$(inside dpkg-query -W -f '${Package}\n')
echo "check-in-root: $release: all is well; $(($(wc -l <<<"$after") - $(wc -l <<<"$before"))) packages came with it"
