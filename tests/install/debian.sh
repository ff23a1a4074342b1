#!/bin/sh
# Installs the Debian packages under a folder of their own, with this machine's packages as those that they may depend
# on, and purges them: debian.sh install|purge ROOT [PACKAGE...]. The machine itself is not changed.
set -eu
action=$1 root=$2
shift 2

inRoot() {
    # Scripts run outside of the folder, and are not to refresh this machine's cache of libraries:
    # they find an ldconfig that does nothing.
    PATH=$root.bin:$PATH fakeroot dpkg --root="$root" --force-not-root --force-script-chrootless --log=/dev/null "$@"
}

files() {
    (cd "$root" && find . ! -type d ! -path './var/lib/dpkg/*' | LC_ALL=C sort)
}

case $action in
install)
    rm -rf "$root" "$root.bin"
    mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root.bin"
    cp /var/lib/dpkg/status "$root/var/lib/dpkg/"
    cp /var/lib/dpkg/info/*.list "$root/var/lib/dpkg/info/"
    printf '#!/bin/sh\n' >"$root.bin/ldconfig"
    chmod +x "$root.bin/ldconfig"
    inRoot --install "$@"
    inRoot --audit libvyn-connector-common0 libvyn-connector-common-dev
    # Every file is the one that was packaged.
    inRoot --verify libvyn-connector-common0 libvyn-connector-common-dev
    ;;
purge)
    inRoot --purge libvyn-connector-common-dev libvyn-connector-common0
    left=$(files)
    if [ -n "$left" ]; then
        printf 'Purged, the packages leave these behind:\n%s\n' "$left" >&2
        exit 1
    fi
    if grep -A2 -i '^Package: libvyn-connector-common' "$root/var/lib/dpkg/status"; then
        echo 'Purged, the packages are still known.' >&2
        exit 1
    fi
    ;;
esac
