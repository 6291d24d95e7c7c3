#!/usr/bin/env bash
# Fetches the sources of simdjson, of the version that is installed, from Debian's source package into
# build/sources/simdjson: for platforms that Debian does not build it for. Needs no rights of the administrator.
set -euo pipefail

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
target=$PWD/build/sources/simdjson
version=$(dpkg-query -W -f '${source:Version}' libsimdjson-dev)
if [ -f "$target/$version" ]; then
    exit 0
fi

echo "setup: fetching the sources of simdjson $version" >&2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/lists/partial" "$work/archives/partial"
# Source packages come from where the binary ones do, which apt's own settings need not say.
distribution=$(. /etc/os-release && echo "$VERSION_CODENAME")
mirrors() {
    apt-get "$@" indextargets --format '$(CREATED_BY) $(CODENAME) $(COMPONENT) $(SITE) $(RELEASE)' |
        sed -n "s/^Packages $distribution main //p"
}
known=$(mirrors)
if [ -z "$known" ]; then # apt has no lists yet, as in small images
    mkdir -p "$work/all/partial"
    own=(-o "Dir::State::Lists=$work/all" -o APT::Sandbox::User= -o Dir::Cache::srcpkgcache= -o Dir::Cache::pkgcache=)
    apt-get "${own[@]}" update >"$work/log" 2>&1 || true
    known=$(mirrors "${own[@]}")
fi
if [ -z "$known" ]; then
    cat "$work/log" >&2 || true
    echo "setup: apt knows no mirror of $distribution" >&2
    exit 2
fi
read -r mirror release <<<"$known"
echo "deb-src $mirror $release main" >"$work/sources.list"
options=(-o "Dir::Etc::SourceList=$work/sources.list" -o Dir::Etc::SourceParts=/dev/null
    -o "Dir::State::Lists=$work/lists" -o "Dir::Cache::Archives=$work/archives" -o APT::Sandbox::User=
    -o Dir::Cache::srcpkgcache= -o Dir::Cache::pkgcache=)
if ! (cd "$work" && apt-get "${options[@]}" update &&
    apt-get "${options[@]}" source --download-only "simdjson=$version") >"$work/log" 2>&1; then
    cat "$work/log" >&2
    echo "setup: apt-get could not fetch the sources of simdjson $version" >&2
    exit 2
fi

rm -rf "$target"
mkdir -p "$target"
tar -x -f "$work"/simdjson_*.orig.tar.* -C "$target" --strip-components=2 --wildcards \
    '*/singleheader/simdjson.cpp' '*/singleheader/simdjson.h'
touch "$target/$version"
