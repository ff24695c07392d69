# Sourced by run, test and .ci/run: installs what packages.txt lists and is missing, and configures.
# What is there already is not touched, so that a second call costs next to nothing.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1

# Prints the packages of the list that are not installed.
missing_packages() {
    local wanted
    wanted=$(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' packages.txt)
    # shellcheck disable=SC2086
    comm -23 <(printf '%s\n' $wanted | sort -u) \
        <(dpkg-query -W -f '${db:Status-Abbrev} ${binary:Package}\n' $wanted 2>/dev/null |
            sed -n -e "s/:$(dpkg --print-architecture)\$//" -e 's/^ii *//p' | sort -u)
}

install_packages() {
    local missing log as_root=()
    command -v dpkg-query >/dev/null || {
        echo "This set-up knows Debian only; install the equivalents of packages.txt by hand." >&2
        return 0
    }
    missing=$(missing_packages | tr '\n' ' ')
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo)
        if ! command -v sudo >/dev/null || ! { sudo -n true 2>/dev/null || [ -t 0 ]; }; then
            echo "Please have an administrator run: apt-get install $missing" >&2
            exit 1
        fi
    fi
    echo "Installing: $missing"
    local machine
    for machine in $(printf '%s\n' $missing | sed -n 's/.*://p' | sort -u); do
        "${as_root[@]}" dpkg --add-architecture "$machine"
    done
    "${as_root[@]}" apt-get -q update >/dev/null || true
    log=$(mktemp)
    # shellcheck disable=SC2086
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q install -y --no-install-recommends $missing \
        >"$log" 2>&1 || {
        tail -n 20 "$log" >&2
        echo "Could not install: $missing" >&2
        exit 1
    }
    rm -f "$log"
}

# configure PRESET FOLDER
configure() {
    [ -f "$2/build.ninja" ] || cmake --preset "$1" >/dev/null || exit 1
}
