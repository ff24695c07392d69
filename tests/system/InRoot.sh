#!/bin/sh
# Runs in a fresh Debian with a compiler but without anything of ours, as its root: installs the
# packages that lie in /root, uses them as a developer and as a user would, and takes them away again.
set -e
cd /root
quietly() {
    "$@" >log 2>&1 || {
        tail -n 20 log
        exit 1
    }
}
# Every file but those of this script and the notes that the package tools keep.
files() {
    find / -xdev \( -path /root -o -path /tmp -o -path /proc -o -path /sys -o -path /dev -o -path /var/cache \
        -o -path /var/log -o -path /var/lib/dpkg -o -path /var/lib/apt \) -prune -o ! -type d -print | sort
}
export DEBIAN_FRONTEND=noninteractive
mkdir -p /home/musician
chown 1000:1000 /home/musician
as_musician() { HOME=/home/musician setpriv --reuid=1000 --regid=1000 --clear-groups "$@"; }
files >before

quietly apt-get -q -y install --no-install-recommends ./corvane-product_*.deb ./corvane-product-tools_*.deb
quillets identity
LD_DEBUG=libs quillets identity 2>&1 >/dev/null | grep -q "calling init: /.*Frameworks" && {
    echo "the bundle's copy of the layer was taken, not the installed one"
    exit 1
}
test -e /usr/share/man/man1/quillets.1.gz || test ! -e /usr/share/man # stripped roots leave manuals out
quillets prefs set Machine Colour blue
as_musician quillets prefs set User Colour green

quietly apt-get -q -y install --no-install-recommends ./corvane-product-dev_*.deb
g++ $(pkg-config --cflags corvane-product) "-DCORVANE_BUNDLE=\"$(pkg-config --variable=bundle corvane-product)\"" \
    Host.cpp -o host
./host
LD_DEBUG=libs ./host 2>&1 >/dev/null | grep "calling init:.*cvplatform" # which layer a host gets

quietly apt-get -q -y autoremove --purge corvane-product corvane-product-dev corvane-product-tools
files >after
echo "left: $(comm -13 before after | tr '\n' ' ')"
grep -l blue $(comm -13 before after) | sed 's/^/the machine has /'
grep -l green $(comm -13 before after) | sed 's/^/the user has /'
echo "taken: $(comm -23 before after | tr '\n' ' ')"
