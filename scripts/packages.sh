# Installs what is missing of the Debian packages that building, testing and showing Tidemark take.
#
#   ensure_packages build [test] [demo] [package]
#
# Asks for rights only when something is missing.

build_packages=(
    git
    g++ cmake ninja-build ccache pkg-config qt6-base-dev qt6-base-dev-tools qcoro-qt6-dev libexpected-dev
    qt6-declarative-dev qt6-declarative-dev-tools qt6-svg-dev qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtquick-templates
    qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
    libicu-dev libsecret-1-dev libcanberra-dev libxcb1-dev libxcb-xinput-dev zlib1g-dev libssl-dev
    libcpp-httplib-dev
)
desktop_packages=(
    xvfb openbox xfce4-panel xfconf lxqt-panel dbus dbus-x11 libglib2.0-bin adwaita-icon-theme
    hicolor-icon-theme
    fonts-dejavu-core fonts-noto-color-emoji imagemagick x11-xserver-utils xdotool procps
    dunst sound-theme-freedesktop libcanberra-pulse
)
test_packages=(
    clang-format clang-tidy jq gnome-keyring libsecret-tools openssl curl libdbusmenu-glib-dev
    desktop-file-utils appstream lintian man-db dpkg-dev file
)
demo_packages=(curl jq)
package_packages=(dpkg-dev file)

ensure_packages() {
    local wanted=() missing=() package kind
    for kind in "$@"; do
        case $kind in
            build) wanted+=("${build_packages[@]}") ;;
            test) wanted+=("${desktop_packages[@]}" "${test_packages[@]}") ;;
            demo) wanted+=("${desktop_packages[@]}" "${demo_packages[@]}") ;;
            package) wanted+=("${package_packages[@]}") ;;
        esac
    done
    for package in "${wanted[@]}"; do
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] ||
            missing+=("$package")
    done
    ((${#missing[@]})) || return 0
    local apt=(env DEBIAN_FRONTEND=noninteractive apt-get)
    ((EUID == 0)) || apt=(sudo "${apt[@]}")
    echo "Installing ${missing[*]}"
    "${apt[@]}" update -qq && "${apt[@]}" install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
