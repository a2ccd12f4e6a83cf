# Installs what is missing of the Debian packages that building, testing and showing Tidemark take.
#
#   ensure_packages build [demo] [test] [bench] [package]
#
# Asks for rights only when something is missing. The names hold on Debian 12 and 13. `scripts/check-packages` compares
# them with what is used.

# What the release preset builds from.
build_packages=(
    g++ cmake ninja-build pkg-config qt6-base-dev qt6-base-dev-tools qcoro-qt6-dev libexpected-dev
    qt6-declarative-dev qt6-declarative-dev-tools qt6-svg-dev qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtquick-templates
    qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
    libicu-dev libsecret-1-dev libcanberra-dev libxcb1-dev libxcb-xinput-dev zlib1g-dev libssl-dev
    libcurl4-openssl-dev libproxy-dev
)
# A desktop without a screen, and what the tour looks and clicks with.
demo_packages=(
    xvfb openbox xfce4-panel xfconf dbus dbus-x11 libglib2.0-bin adwaita-icon-theme hicolor-icon-theme
    fonts-dejavu-core fonts-noto-color-emoji imagemagick x11-xserver-utils xdotool procps dunst curl jq
)
test_packages=(
    git ccache clang-format-19 clang-tidy-19 lxqt-panel gnome-keyring libsecret-tools openssl libdbusmenu-glib-dev
    libcanberra-pulse sound-theme-freedesktop desktop-file-utils appstream man-db dpkg-dev file
)
bench_packages=(gnome-keyring libsecret-tools)
package_packages=(dpkg-dev file lintian)

# The packages of the kinds given, a line each.
packages_of() {
    local kind
    for kind in "$@"; do
        local -n named=${kind}_packages
        printf '%s\n' "${named[@]}"
    done
}

ensure_packages() {
    local missing=() package
    while read -r package; do
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] ||
            missing+=("$package")
    done < <(packages_of "$@" | sort -u)
    ((${#missing[@]})) || return 0
    local apt=(env DEBIAN_FRONTEND=noninteractive apt-get)
    ((EUID == 0)) || apt=(sudo "${apt[@]}")
    echo "Installing ${missing[*]}"
    "${apt[@]}" update -qq && "${apt[@]}" install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
