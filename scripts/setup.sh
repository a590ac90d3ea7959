#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the packages that Ostrine needs on Debian 12 or 13. If all of them are installed already, it does nothing
# and needs no privileges. It never removes a package.
#
#   setup.sh SET...
#
#   run               to build and run the program
#   wayland           to run it on a desktop that supports only Wayland
#   package           to build the Debian package
#   demo              to build it and run the demo session on a virtual screen with a virtual sound output
#   test              to build it and run the tests
#   valgrind          the same, and to run them under valgrind
#   fuzz              to build and run the fuzz targets
#   bench             to build and run the benchmarks
#   bench-pulseaudio  the same, with PulseAudio as well; it cannot be installed where the desktop's sound server is
#                     PipeWire
set -euo pipefail

build=(
    build-essential cmake ninja-build
    qt6-base-dev qt6-charts-dev qt6-multimedia-dev
    # Qt Charts' CMake package requires these two, but the Debian package does not depend on them
    libqt6opengl6-dev libgl1-mesa-dev
    # To record what the sound server plays
    libpulse-dev pkg-config
    # Fonts for the windows, with and without a screen
    fonts-dejavu-core
)
# A private sound server, whose output can be recorded
sound=(procps dbus-daemon pipewire pipewire-bin pipewire-pulse wireplumber pulseaudio-utils)
# A private display, and tools that find and press the buttons of the windows
screen=(
    xvfb openbox xdotool x11-utils imagemagick
    at-spi2-core python3 python3-pyatspi gir1.2-atspi-2.0
)
# The Fourier transform is also tested with another compiler and for another processor
checks=(clang g++-aarch64-linux-gnu qemu-user)
# The sources are formatted and analysed by these versions; Debian 13 no longer has them.
if [ "$(. /etc/os-release && echo "${VERSION_CODENAME:-}")" = bookworm ]; then
    checks+=(clang-format-14 clang-tidy-14)
fi
# The Debian package and the HTML documents in it; file lets CPack find the programs
packaging=(cmark-gfm python3 file)
# The package is checked by these; man-db formats the man pages
package_checks=(desktop-file-utils appstream lintian man-db)
# What the readers of result files in docs/readers are run with
readers=(python3-pandas r-base-core)
# The fuzzer comes with Clang's run-time libraries; llvm names the lines of a finding
fuzzer=(clang libclang-rt-dev llvm)
# Other libraries' transforms and readers to compare with
peers=(libbenchmark-dev libfftw3-dev libgsl-dev libeigen3-dev libsndfile1-dev)

packages=()
if [ $# -eq 0 ]; then
    echo "usage: setup.sh run|wayland|package|demo|test|valgrind|fuzz|bench|bench-pulseaudio..." >&2
    exit 2
fi
for set in "$@"; do
    case $set in
        run) packages+=("${build[@]}") ;;
        wayland) packages+=(qt6-wayland) ;;
        package) packages+=("${build[@]}" "${packaging[@]}") ;;
        demo) packages+=("${build[@]}" "${sound[@]}" "${screen[@]}") ;;
        test)
            packages+=("${build[@]}" "${sound[@]}" "${screen[@]}" "${checks[@]}" "${readers[@]}" "${packaging[@]}"
                "${package_checks[@]}")
            ;;
        valgrind) packages+=("${build[@]}" "${sound[@]}" "${screen[@]}" "${checks[@]}" valgrind) ;;
        fuzz) packages+=("${build[@]}" "${fuzzer[@]}") ;;
        bench) packages+=("${build[@]}" "${sound[@]}" "${peers[@]}") ;;
        bench-pulseaudio) packages+=("${build[@]}" "${sound[@]}" "${peers[@]}" pulseaudio) ;;
        *) echo "setup: there is no set of packages $set" >&2; exit 2 ;;
    esac
done

# The installed packages and what they provide: a package of one release may be a virtual package in the next. The
# status is checked, because a removed package whose configuration files remain is still listed.
installed=$(dpkg-query -W -f '${db:Status-Status},${Package},${Provides}\n' |
    sed -n 's/^installed,//p' | tr ',' '\n' | sed 's/^ *//; s/ .*//')
mapfile -t missing < <(printf '%s\n' "${packages[@]}" | grep -vxF "$installed")
if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: all ${#packages[@]} packages are installed"
    exit 0
fi
echo "setup: missing: ${missing[*]}"

install=(apt-get install -y --no-install-recommends --no-remove)
if ! source "$(dirname "${BASH_SOURCE[0]}")/as-root.sh"; then
    echo "setup: this user may not install packages. As root, run this once, then start again:" >&2
    echo "    apt-get update && ${install[*]} ${missing[*]}" >&2
    exit 1
fi

# sudo drops the environment, so env sets the variable after it.
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update
# Simulated first: with --no-remove apt does not say which packages it would have removed.
plan=$(apt-get install --simulate --no-install-recommends "${missing[@]}" 2>&1) || { echo "$plan" >&2; exit 1; }
removed=$(sed -n 's/^Remv \([^ ]*\).*/\1/p' <<<"$plan")
if [ -n "$removed" ]; then
    echo "setup: nothing was installed. These packages, which are installed here, stand in the way, and apt would" \
        "remove them: ${removed//$'\n'/ }" >&2
    exit 1
fi
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive "${install[@]}" "${missing[@]}"
echo "setup: installed: ${missing[*]}"
