#!/bin/sh
# Runs in a fresh Debian without anything of ours, as its root: installs the packages that lie in
# /root, uses them as a developer and as a user would, and takes them away again.
set -e
cd /root
quietly() {
    "$@" >log 2>&1 || {
        tail -n 20 log
        exit 1
    }
}
export DEBIAN_FRONTEND=noninteractive

quietly apt-get -q -y install --no-install-recommends ./corvane-product_*.deb ./corvane-product-tools_*.deb
quillets identity
LD_DEBUG=libs quillets identity 2>&1 >/dev/null | grep -q "calling init: /.*Frameworks" && {
    echo "the bundle's copy of the layer was taken, not the installed one"
    exit 1
}
test -e /usr/share/man/man1/quillets.1.gz || test ! -e /usr/share/man # stripped roots leave manuals out

quietly apt-get -q -y install --no-install-recommends ./corvane-product-dev_*.deb g++ pkg-config
g++ $(pkg-config --cflags corvane-product) "-DCORVANE_BUNDLE=\"$(pkg-config --variable=bundle corvane-product)\"" \
    Host.cpp -o host
./host
LD_DEBUG=libs ./host 2>&1 >/dev/null | grep "calling init:.*cvplatform" # which layer a host gets

quietly apt-get -q -y purge corvane-product corvane-product-dev corvane-product-tools
left=$(find /usr /etc /var/lib -path /var/lib/dpkg -prune -o -path /var/lib/apt -prune -o \
    \( -iname '*corvane*' -o -iname '*quillets*' -o -iname '*cvplatform*' \) -print)
left=$(printf '%s' "$left" | grep -v '/etc/xdg/corvane' || true) # what the user had stored machine-wide
if [ -n "$left" ]; then
    echo "left behind: $left"
    exit 1
fi
echo "all gone"
