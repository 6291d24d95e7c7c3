#!/usr/bin/env bash
# Builds the API documentation with Doxygen, as HTML pages in FOLDER/html. Fails on any warning: whatever the public headers
# declare is documented.
#
#     build-api-docs.sh FOLDER [VERSION]
set -euo pipefail

folder=$(mkdir -p "$1" && cd "$1" && pwd -P)
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
if ! command -v doxygen >/dev/null; then
    echo "build-api-docs: doxygen is missing (package doxygen)" >&2
    exit 1
fi

rm -rf "$folder/html" # pages of classes that are gone would stay
QUELT_VERSION=${2:-} QUELT_API_DOCS=$folder QUELT_SOURCES=$(pwd -P) exec doxygen docs/api/Doxyfile
