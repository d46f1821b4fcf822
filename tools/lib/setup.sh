# Sourced by ./run and ./test: installs what is missing, by name, from Debian's packages.
# shellcheck shell=bash

# What the programs need to be built and to run.
build_packages=(g++ cmake ninja-build pkg-config ccache libsqlite3-dev libsimdjson-dev nlohmann-json3-dev libicu-dev
    libre2-dev libfmt-dev libcli11-dev libcurl4-openssl-dev ca-certificates tzdata)
# What the desktop widget needs beside that, to be built and to run under Wayland too.
widget_packages=(qt6-base-dev qt6-declarative-dev qt6-svg-dev libgl-dev qml6-module-qtquick qml6-module-qtqml-workerscript
    qt6-wayland)
# What the sample home needs beside that.
sample_packages=(python3)
# What the tests need beside that.
test_packages=(libgtest-dev libgmock-dev clang-format-14 jq zsh python3 sqlite3 procps openssl
    python3-jsonschema chromium fonts-inter fonts-dejavu-core dbus-daemon)

# Prints those of the given packages that are not installed.
missing_packages() {
    local package
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || printf '%s\n' "$package"
    done
}

# Installs the given packages, through sudo when not root. One clear line when that is not possible.
install_packages() {
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        echo "This set-up knows Debian's apt only. Please install: $*" >&2
        return 1
    fi
    local missing as_root=()
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "Missing packages, and neither root nor sudo to install them: apt-get install ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "Installing with apt: ${missing[*]}" >&2
    if ! "${as_root[@]}" apt-get update -qq >&2 ||
        ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
            "${missing[@]}" >&2; then
        echo "apt could not install: ${missing[*]}" >&2
        return 1
    fi
}
