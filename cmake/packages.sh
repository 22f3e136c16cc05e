# The sets of Debian packages that the scripts of this project install, and the one function that
# does it. To be sourced by bash.

packages_run=(g++ cmake ninja-build ccache libasio-dev libssl-dev libexpat1-dev)
# For the window of examples/desk: any font with Japanese would do.
packages_desk=(libfltk1.3-dev libpng-dev fonts-ipafont-gothic)
packages_test=("${packages_run[@]}" pkg-config libgtest-dev libgmock-dev tzdata)
packages_ci=("${packages_test[@]}" "${packages_desk[@]}" xvfb clang clang-format clang-tidy
    libclang-rt-14-dev libfuzzer-14-dev)
packages_bench=("${packages_run[@]}" pkg-config libbenchmark-dev rapidjson-dev libyajl-dev
    libsimdjson-dev nlohmann-json3-dev libjsoncpp-dev libboost1.81-dev libboost-json1.81-dev
    libutfcpp-dev nettle-dev libfmt-dev libmbedtls-dev libtomcrypt-dev
    libpugixml-dev libxml2-dev libabsl-dev libboost-url1.81-dev libcurl4-openssl-dev)

# package_is_here PACKAGE: a tool counts however it was installed, what is no tool is asked of dpkg.
# Without dpkg a library is left to CMake, which names what it does not find, and the zone files to the
# tests, which miss them by name.
package_is_here() {
    case $1 in
        ninja-build) command -v ninja >/dev/null ;;
        xvfb) command -v Xvfb >/dev/null ;;
        *-dev | fonts-* | tzdata)
            ! command -v dpkg-query >/dev/null ||
                [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
            ;;
        *) command -v "$1" >/dev/null ;;
    esac
}

# need_packages PACKAGE...: installs those that are missing; does nothing on a machine that has
# them all. Returns 1 and says what is missing if it may not or cannot install.
need_packages() {
    local package missing=()
    for package in "$@"; do
        package_is_here "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if ! command -v apt-get >/dev/null; then
        printf 'Missing, and there is no apt-get to install it: %s\n' "${missing[*]}" >&2
        return 1
    fi
    if [ "$(id -u)" -ne 0 ]; then
        printf 'Missing, and only root can install it: %s\n' "${missing[*]}" >&2
        printf 'As root: apt-get update && apt-get install %s\n' "${missing[*]}" >&2
        return 1
    fi
    printf 'Installing: %s\n' "${missing[*]}"
    {
        apt-get update -q &&
            DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends "${missing[@]}"
    } </dev/null >/dev/null && return 0
    printf 'Missing, and apt-get could not install it: %s\n' "${missing[*]}" >&2
    return 1
}
