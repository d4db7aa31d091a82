# What ./run and ./test share. Sourced from the project's folder, by bash.

started=$SECONDS

# A heading that tells what happens now and how long everything took so far.
say()
{
    local elapsed=$((SECONDS - started))
    printf '== [%d:%02d] %s\n' $((elapsed / 60)) $((elapsed % 60)) "$*"
}

fail()
{
    echo "$(basename "$0"): $*" >&2
    exit 1
}

job_count()
{
    echo "${EVENTLISTHANDLER_JOBS:-$(nproc)}"
}

# A compiler cache when there is one that can be written to; builds work the same without.
use_compiler_cache()
{
    compiler_cache=()
    command -v ccache >/dev/null || return 0
    local folder
    folder=$(ccache -k cache_dir 2>/dev/null) || return 0
    if ! { mkdir -p "$folder" && [ -w "$folder" ]; } 2>/dev/null; then
        export CCACHE_DIR=$PWD/build/ccache
        mkdir -p "$CCACHE_DIR"
    fi
    # It takes no part in what includes precompiled headers without this.
    export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros}
    compiler_cache=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
}

# Configures one preset. Everything goes to build/<preset>.
configure()
{
    local preset=$1
    shift
    if [ -e build ] && ! [ -w build ]; then
        fail "the folder build belongs to $(stat -c %U build): remove it, or call this as that user"
    fi
    # A tree that was moved or copied brings the paths of its old place.
    local cache=build/$preset/CMakeCache.txt
    if [ -f "$cache" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$cache"; then
        rm -rf "build/$preset"
    fi
    mkdir -p build
    use_compiler_cache
    local log=build/configure-$preset.log
    if ! cmake --preset "$preset" "${compiler_cache[@]}" "$@" >"$log" 2>&1; then
        cat "$log" >&2
        fail "configuring $preset failed"
    fi
}

# Builds what the tests need and runs the campaign tests of one folder, which tell their figures. The usage comes on the
# standard input.
run_campaign()
{
    local folder=$1
    shift
    local usage
    usage=$(cat)
    if [ $# -gt 0 ]; then
        [[ "$*" == --help || "$*" == -h ]] || { printf '%s\n' "$usage" >&2; exit 2; }
        printf '%s\n' "$usage"
        exit 0
    fi
    say "Building"
    configure development
    cmake --build build/development -j "$(job_count)" --target all || fail "the build failed"
    say "The campaign"
    ctest --test-dir build/development -C campaign -L '^campaign$' -R "^campaign/$folder/" --verbose --no-tests=error
}
