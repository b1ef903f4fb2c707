# Shared by the scripts beside it: where things are, the Debian packages that each job needs, and
# how a preset is built. To be sourced.
# shellcheck shell=bash
set -euo pipefail
shopt -s inherit_errexit

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
# No byte code beside the sources: they may be another user's.
export PYTHONDONTWRITEBYTECODE=1

# The one list of packages, by what they are needed for.
declare -A packages=(
  [build]="clang-19 libc++-19-dev libc++abi-19-dev lld-19 cmake ninja-build
           libcli11-dev libjs-dygraphs nlohmann-json3-dev zlib1g-dev googletest python3 python3-pytest"
  [sanitizers]="libclang-rt-19-dev"
  [gcc]="g++-12"
  [arm64]="qemu-user"
  [kit]="xz-utils"
  [vm]="qemu-system-arm cpio kmod xz-utils"
  [packaging]="dpkg-dev file"
  [faults]="strace"
  [bench]="mawk"
  [peers]="procps sysstat atop collectl smem"
  [browser]="chromium chromium-driver python3-selenium"
  [lint]="clang-format-19 clang-tidy-19 shellcheck"
)

say() { printf 'scripts/%s: %s\n' "${0##*/}" "$*" >&2; }
fail() {
  say "$@"
  exit 1
}

# missing_packages PURPOSE...: those not installed, on one line. Where there is no dpkg, nothing is
# known to be missing, and CMake names what it lacks.
missing_packages() {
  command -v dpkg-query >/dev/null || return 0
  local purpose wanted=() installed package missing=()
  for purpose; do
    read -ra installed -d '' <<<"${packages[$purpose]}" || true
    wanted+=("${installed[@]}")
  done
  installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null) || true
  for package in "${wanted[@]}"; do
    grep -qxF "installed $package" <<<"$installed" || missing+=("$package")
  done
  echo "${missing[*]}"
}

# need PURPOSE...: installs what is missing, by sudo where the caller is not root.
need() {
  local missing as_root=()
  missing=$(missing_packages "$@")
  [[ $missing ]] || return 0
  local hint="packages are missing; as root: apt-get install $missing"
  if ((EUID != 0)); then
    command -v sudo >/dev/null || fail "$hint"
    as_root=(sudo)
  fi
  say "installing $missing"
  as_root+=(env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300)
  "${as_root[@]}" update </dev/null >/dev/null || say "going on with the package lists there are"
  # shellcheck disable=SC2086  # a list of names
  "${as_root[@]}" install -y --no-install-recommends $missing </dev/null >/dev/null || fail "$hint"
}

# build_dir PRESET: in the checkout, or in the caller's cache where the checkout may not be written.
build_dir() {
  local dir=$root/build/$1
  if ! { mkdir -p "$dir" && [[ -w $dir ]]; } 2>/dev/null; then
    dir=${XDG_CACHE_HOME:-$HOME/.cache}/corvane/$(cksum <<<"$root" | cut -d' ' -f1)/$1
    mkdir -p "$dir"
  fi
  echo "$dir"
}

# arm64_packages FOLDER COMMAND...: runs an apt command on AArch64 packages. Package lists, in FOLDER,
# and the state of the machine's own packages have nothing to do with each other.
arm64_packages() {
  local work=$1 command=$2
  shift 2
  if [[ ! -e $work/status ]]; then
    mkdir -p "$work"/{lists,archives}/partial
    : >"$work/status"
    arm64_packages "$work" apt-get update >&2 || say "going on with the package lists that could be had"
  fi
  "$command" -qq -o APT::Architecture=arm64 -o APT::Architectures::=arm64 -o Dir::State="$work" \
    -o Dir::State::status="$work/status" -o Dir::Cache="$work" -o APT::Sandbox::User= \
    -o Acquire::Languages=none "$@"
}

# unpack_arm64 FOLDER PACKAGE...: below FOLDER, not installed.
unpack_arm64() {
  local into=$1 package
  shift
  (
    cd "$into/download/archives"
    arm64_packages "$into/download" apt-get download "$@" >&2
    for package in *.deb; do
      dpkg -x "$package" "$into"
    done
  )
}

# refuses_large_pages PROGRAM: whether Android's C library in a static program is one whose allocator
# aborts where pages are not of 4 KiB, as that of API level 29 does.
refuses_large_pages() { grep -qa 'Unsupported system page size' "$1"; }

# What root builds in another's checkout must not lock its owner out.
hand_back() {
  if ((EUID == 0)) && [[ -d $root/build && ! -O $root ]]; then
    chown -R --reference="$root" "$root/build"
  fi
}

# prepare PRESET: installs what its build and its tests need; sets what it is configured with.
prepare() {
  settings=()
  case $1 in
    asan | tsan) need build sanitizers ;;
    gcc) need build gcc ;;
    linux-arm64*)
      need build arm64
      settings=(-D "CORVANE_SYSROOT=$("$root/scripts/sysroot-arm64")")
      ;;
    android-arm64*)
      ANDROID_NDK_HOME=$("$root/scripts/android-kit") || exit
      export ANDROID_NDK_HOME
      need build arm64
      ;;
    *) need build ;;
  esac
}

# build PRESET [TARGET...]: prepares, configures where needed and builds, without a word when all
# is built. Everything goes to standard error. One build at a time in a folder.
build() {
  local preset=$1 dir settings lock status=0
  shift
  prepare "$preset"
  dir=$(build_dir "$preset")
  exec {lock}<"$dir"
  flock "$lock"
  if [[ ! -e $dir/build.ninja || $root/CMakePresets.json -nt $dir/build.ninja ]]; then
    say "configuring $dir"
    (cd "$root" && cmake --preset "$preset" -B "$dir" -Wno-dev "${settings[@]}") >/dev/null || status=$?
  fi
  if ((status == 0)) && [[ $(ninja -C "$dir" -n "$@" 2>&1) != *"no work to do"* ]]; then
    say "building $dir"
    ninja -C "$dir" "$@" </dev/null >&2 || status=$?
  fi
  exec {lock}<&-
  hand_back
  return $status
}
