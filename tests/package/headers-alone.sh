#!/bin/sh
# headers-alone.sh CXX INCLUDE_DIR: each public header compiles as the only one, without warnings, and Orlix.h brings it.
set -eu
cxx=$1
include=$2
failed=0
for path in $(cd "$include" && find Orlix -name '*.h' | LC_ALL=C sort); do
    if ! echo "#include <$path>" | "$cxx" -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Werror \
        -I "$include" -x c++ -; then
        echo "does not compile alone: $path"
        failed=1
    fi
    if [ "$path" != Orlix/Orlix.h ] && ! grep -qF "#include <$path>" "$include/Orlix/Orlix.h"; then
        echo "missing in Orlix.h: $path"
        failed=1
    fi
done
exit $failed
