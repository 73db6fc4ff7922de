#!/bin/sh
# installed-consumer.sh CMAKE CXX BUILD_DIR CONSUMER_DIR FLAGS: installs into a scratch folder, then builds and runs a
# consumer that finds the library by find_package and by pkg-config.
set -eu
cmake=$1
cxx=$2
build=$3
consumer=$4
flags=${5:-}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
"$cmake" --install "$build" --prefix "$scratch/usr" >/dev/null
libdir=$(dirname "$(find "$scratch/usr" -name orlix.pc)")/..

"$cmake" -G Ninja -S "$consumer" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$scratch/usr" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_CXX_FLAGS="$flags" >/dev/null
"$cmake" --build "$scratch/build" >/dev/null
"$scratch/build/consumer"

# The prefix in the file is the one of the configuration; pkg-config takes the scratch folder's in its place.
pc=$(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --define-variable=prefix="$scratch/usr" --cflags --libs orlix)
"$cxx" -std=c++17 $flags "$consumer/main.cpp" $pc -Wl,-rpath,"$libdir" -o "$scratch/consumer"
"$scratch/consumer"
