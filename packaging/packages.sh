# Sourced by demo, check, bench/run and docs/take-screenshots: installs Debian packages that are missing.

# need_packages NAME... : installs those of the named packages that the machine lacks.
need_packages() {
    local missing=() name
    for name in "$@"; do
        dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null | grep -qx installed ||
            missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "These packages are missing, and there is neither root nor sudo to install them:" \
                "${missing[*]}" >&2
            return 1
        }
        as_root=(sudo)
    fi
    echo "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# What it takes to build the two programs.
build_packages=(g++ cmake ninja-build libssl-dev)

# What the windows take beside it, and what it takes to show and to drive them without a screen.
windows_packages=(qt6-base-dev)
screen_packages=(xvfb xdotool fonts-dejavu-core)
