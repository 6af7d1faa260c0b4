#!/usr/bin/env bash
# consume.sh <case> <build folder of libzeb> <source folder of libzeb> <work folder>: one way in
# which a stranger's project comes by the library, from nothing to a host and a module that run.
set -euo pipefail

kind=$1 build=$2 source=$3 work=$4
here=$(cd "$(dirname "$0")" && pwd)

fail() {
  echo "$*" >&2
  exit 1
}

# install_to <prefix> [<cmake option>...]
install_to() {
  local prefix=$1
  shift
  cmake --install "$build" --prefix "$prefix" >/dev/null
  [[ -e $prefix/include/zeb/zeb.h ]] || fail "nothing was installed to $prefix"
  [[ -e $prefix/share/zeb/zeb.json ]] || fail "the description was not installed to $prefix"
}

# run_project <cmake option>...: configures, builds and runs the consumer.
run_project() {
  cmake -S "$here/project" -B "$work/consumer" -G Ninja -DCMAKE_BUILD_TYPE=Release "$@" >"$work/log" ||
    { cat "$work/log"; fail "the consumer was not configured"; }
  cmake --build "$work/consumer" >"$work/log" ||
    { cat "$work/log"; fail "the consumer was not built"; }
  ctest --test-dir "$work/consumer" --output-on-failure --no-tests=error
}

# refused <words> <cmake option>...: configuring must fail and say these words.
refused() {
  local words=$1
  shift
  if cmake -S "$here/project" -B "$work/consumer" -G Ninja "$@" >"$work/log" 2>&1; then
    fail "the consumer was configured"
  fi
  tr -s ' \n' '  ' <"$work/log" | grep -F "$words" >/dev/null || { cat "$work/log"; fail "not said: $words"; }
}

# plain_c <folder of zeb.pc>: no CMake, only the C compiler and pkg-config.
plain_c() {
  export PKG_CONFIG_PATH=$1
  local flags libs folder
  read -ra flags <<<"$(pkg-config --cflags 'zeb >= 4')"
  read -ra libs <<<"$(pkg-config --libs zeb)"
  folder=$(pkg-config --variable=libdir zeb)
  gcc -std=c11 -fPIC -shared "${flags[@]}" "$here/module.c" -o "$work/module.so"
  gcc -std=c11 -DHOST_IS_LINKED "${flags[@]}" "$here/host.c" -o "$work/host" "${libs[@]}" -ldl
  [[ $(LD_LIBRARY_PATH=$folder "$work/host" "$work/module.so") == "hello from the module" ]] ||
    fail "the host did not greet"
}

# inspects_itself <prefix>: an installed zebinfo, if there is one, takes the library beside it.
inspects_itself() {
  [[ -e $1/bin/zebinfo ]] || return 0
  "$1/bin/zebinfo" --json >"$work/inspection"
  grep -F '"file": "' "$work/inspection" | grep -F "$1/bin/../lib/libzeb.so.4" >/dev/null ||
    fail "zebinfo does not find the library beside it"
}

rm -rf "$work"
mkdir -p "$work"
case $kind in
  installed)
    install_to "$work/prefix"
    run_project -DCMAKE_PREFIX_PATH="$work/prefix"
    ;;
  moved)
    install_to "$work/first"
    mv "$work/first" "$work/second"
    if grep -rIl -e "$work/first" -e "$build" -e "$source" "$work/second"; then
      fail "the files above name a folder of this machine"
    fi
    run_project -DCMAKE_PREFIX_PATH="$work/second"
    inspects_itself "$work/second"
    rm -rf "$work/consumer"
    plain_c "$work/second/lib/pkgconfig"
    ;;
  version_too_high)
    install_to "$work/prefix"
    refused 'compatible with requested version "5"' \
      -DCMAKE_PREFIX_PATH="$work/prefix" -DVERSION_WANTED=5
    refused 'compatible with requested version "4.9"' \
      -DCMAKE_PREFIX_PATH="$work/prefix" -DVERSION_WANTED=4.9
    ;;
  plain_c)
    install_to "$work/prefix"
    plain_c "$work/prefix/lib/pkgconfig"
    ;;
  # The library is built again in these three, which takes its time.
  absolute_libdir)
    cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
      -DZEB_BUILD_TESTS=OFF -DZEB_BUILD_EXAMPLES=OFF -DZEB_BUILD_BENCH=OFF -DZEB_BUILD_TOOLS=OFF \
      -DCMAKE_INSTALL_PREFIX="$work/prefix" -DCMAKE_INSTALL_LIBDIR="$work/elsewhere/lib" >/dev/null
    cmake --build "$work/build" --parallel "${JOBS:-2}" >/dev/null
    build=$work/build
    install_to "$work/prefix"
    [[ -e $work/elsewhere/lib/libzeb.so.4 ]] || fail "the library is not where it was asked to be"
    plain_c "$work/elsewhere/lib/pkgconfig"
    run_project -DCMAKE_PREFIX_PATH="$work/elsewhere"
    ;;
  add_subdirectory | fetch_content)
    run_project -DWAY="$kind" -DZEB_SOURCE="$source"
    ;;
  static_refused)
    refused 'libzeb is a shared library' \
      -DWAY=add_subdirectory -DZEB_SOURCE="$source" -DBUILD_SHARED_LIBS=OFF
    ;;
  packages)
    (cd "$work" && cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work" >"$work/log")
    local_architecture=$(dpkg --print-architecture)
    packages=(libzeb4_4.0_ libzeb-dev_4.0_)
    [[ ! -e $build/tools/zebinfo/zebinfo ]] || packages+=(zeb-tools_4.0_)
    for package in "${packages[@]}"; do
      dpkg-deb --extract "$work/$package$local_architecture.deb" "$work/unpacked"
    done
    dpkg-deb --field "$work/libzeb4_4.0_$local_architecture.deb" Depends | grep libc6 >/dev/null ||
      fail "the package does not say what it needs"
    plain_c "$work/unpacked/usr/lib/pkgconfig"
    inspects_itself "$work/unpacked/usr"
    ;;
  *) fail "unknown case $kind" ;;
esac
