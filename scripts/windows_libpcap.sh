#!/usr/bin/env bash
# windows_libpcap.sh DEST: builds libpcap for Windows x64 from Debian's source package, reading of capture
# files alone, into DEST/include and DEST/lib. Does nothing when the same version stands there already.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
mkdir -p "${1:?usage: windows_libpcap.sh DEST}"
dest=$(cd "$1" && pwd)

# The version that native programs are built with here; the newest of Debian's mirror when that isn't known.
version=$(dpkg-query -W -f '${source:Version}' libpcap0.8-dev 2>/dev/null || true)
[[ -f $dest/lib/libpcap.a && $(cat "$dest/version" 2>/dev/null) == "$version" ]] && exit 0

work=$(mktemp -d "$dest/work-XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"

# A source list and lists of its own: the system's stay as they are.
mkdir -p lists/partial cache/archives/partial
release=$(. /etc/os-release && echo "$VERSION_CODENAME")
echo "deb-src http://deb.debian.org/debian $release main" >src.list
apt=(apt-get -qq -o Dir::Etc::sourcelist="$work/src.list" -o Dir::Etc::sourceparts=-
    -o Dir::State::lists="$work/lists" -o Dir::Cache="$work/cache" -o APT::Sandbox::User=root)
"${apt[@]}" update
"${apt[@]}" source "libpcap${version:+=$version}" >/dev/null
cd libpcap-*/

# Program and library share one C runtime here, so streams may pass between them as they do elsewhere.
sed -i 's/^static \(pcap_t \*pcap_fopen_offline_with_tstamp_precision\)/\1/' savefile.c
sed -zi 's/#ifdef _WIN32\nstatic\n#endif\n//g' savefile.c
sed -i '0,/^  #ifndef BUILDING_PCAP$/s//  PCAP_API pcap_t *pcap_fopen_offline_with_tstamp_precision(FILE *, u_int, char *);\n  #if 0/' \
    pcap/pcap.h

build() {
    # Nothing of the building system's libraries.
    PKG_CONFIG_LIBDIR=/nonexistent cmake -S . -B out -G Ninja -Wno-dev -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake" -DCMAKE_C_FLAGS=-D__USE_MINGW_ANSI_STDIO=1 \
        -DPCAP_TYPE=null -DENABLE_REMOTE=OFF -DDISABLE_DBUS=ON -D_libfullpath=ws2_32 &&
        cmake --build out --target pcap_static
}
if ! build >"$dest/build.log" 2>&1; then
    cat "$dest/build.log" >&2
    exit 1
fi

mkdir -p "$dest/include" "$dest/lib"
cp -r pcap pcap.h "$dest/include/"
cp "$(find out -name 'libpcap*.a')" "$dest/lib/libpcap.a"
echo "$version" >"$dest/version"
