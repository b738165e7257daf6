# @file
# The distribution packages the builds and boots need: installs those that are missing.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly PACKAGES_TO_BUILD=(
  gcc g++ make cmake ninja-build                # host tools and EDK II BaseTools
  gcc-aarch64-linux-gnu g++-aarch64-linux-gnu   # the firmware
  python3 uuid-dev acpica-tools
  patch xz-utils                                # unpack the EDK II source package
  qemu-system-arm mtools                        # boot it
  libcli11-dev libfmt-dev nlohmann-json3-dev libpcre2-dev   # the inspector
)
readonly PACKAGES_FOR_CLANG=(clang lld llvm)     # with TOOLCHAIN=CLANGDWARF
readonly PACKAGES_TO_TEST=(
  libgtest-dev libgmock-dev clang-format clang-tidy shellcheck
  clang libclang-rt-dev                         # the fuzz targets
  nasm                                          # the package for X64
  python3-jsonschema                            # exports against their schemas
  qemu-efi-aarch64                              # foreign firmware to start the driver on
)
readonly PACKAGES_TO_READ_EXPORTS=(python3-sushy)   # a check is skipped without them
readonly PACKAGES_TO_MEASURE=(qemu-user)
readonly PACKAGES_TO_COVER=(llvm)
readonly PACKAGES_FOR_DOCS=(doxygen)

# Megabytes that a full installation takes on the root file system, with room for the downloaded archives.
readonly PACKAGE_SPACE_BUILD=1200 PACKAGE_SPACE_TEST=1900 PACKAGE_SPACE_MEASURE=200 PACKAGE_SPACE_COVER=100 PACKAGE_SPACE_CLANG=700
readonly PACKAGE_SPACE_DOCS=100

as_root() { if ((EUID == 0)); then "$@"; else sudo "$@"; fi; }

# missing_packages PACKAGE...: those that are not installed, on one line.
missing_packages() {
  local package status
  for package in "$@"; do
    # shellcheck disable=SC2016  # a dpkg-query format, not a shell variable
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) || status=none
    [[ $status == installed ]] || printf '%s ' "$package"
  done
}

# apt knows no candidate for a package when its index was never fetched or is stale.
index_has() {
  local package
  for package in "$@"; do
    apt-cache policy "$package" 2>/dev/null | grep -q 'Candidate: [^(]' || return 1
  done
}

apt_install() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
    -o Dpkg::Use-Pty=0 -o Acquire::Retries=2 "$@"
}

# An index with a candidate may still name versions that the registry has since replaced: refresh once and try again.
update_and_install() {
  if index_has "$@" && apt_install "$@"; then return; fi
  as_root apt-get update -o Acquire::Retries=2 && apt_install "$@"
}

# install_packages build|bench|test|coverage|docs: coverage includes test, and test includes build.
install_packages() {
  local -a wanted
  local space
  case $1 in
    docs)
      wanted=("${PACKAGES_FOR_DOCS[@]}")
      space=$PACKAGE_SPACE_DOCS
      ;;
    build)
      wanted=("${PACKAGES_TO_BUILD[@]}")
      space=$PACKAGE_SPACE_BUILD
      ;;
    bench)
      wanted=("${PACKAGES_TO_BUILD[@]}" "${PACKAGES_TO_MEASURE[@]}")
      space=$((PACKAGE_SPACE_BUILD + PACKAGE_SPACE_MEASURE))
      ;;
    test)
      wanted=("${PACKAGES_TO_BUILD[@]}" "${PACKAGES_TO_TEST[@]}" "${PACKAGES_TO_MEASURE[@]}")
      space=$((PACKAGE_SPACE_BUILD + PACKAGE_SPACE_TEST))
      ;;
    coverage)
      wanted=("${PACKAGES_TO_BUILD[@]}" "${PACKAGES_TO_TEST[@]}" "${PACKAGES_TO_COVER[@]}")
      space=$((PACKAGE_SPACE_BUILD + PACKAGE_SPACE_TEST + PACKAGE_SPACE_COVER))
      ;;
    *) die "install_packages: unknown purpose $1" ;;
  esac
  if [[ $1 != docs && ${TOOLCHAIN:-} == CLANG* ]]; then
    wanted+=("${PACKAGES_FOR_CLANG[@]}")
    space=$((space + PACKAGE_SPACE_CLANG))
  fi
  install_missing "$space" "${wanted[@]}"
  if [[ $1 == test ]]; then install_optional "${PACKAGES_TO_READ_EXPORTS[@]}"; fi
}

# install_optional PACKAGE...: those that are missing and can be had without a question.
install_optional() {
  local -a missing
  read -r -a missing <<<"$(missing_packages "$@")"
  ((${#missing[@]} > 0)) && index_has "${missing[@]}" || return 0
  ((EUID == 0)) || sudo -n true 2>/dev/null || return 0
  say "==> Optional packages: ${missing[*]}"
  mkdir -p "$LOGS"
  apt_install "${missing[@]}" >"$LOGS/optional-packages.log" 2>&1 || say "    not installed"
}

# unpack_fwupd FOLDER: fwupdtool and its libraries from the distribution's packages. Nothing is installed: the packages
# bring a service, and newer versions of systemd.
unpack_fwupd() {
  local folder=$1 libraries
  local -a packages
  rm -rf "$folder"
  mkdir -p "$folder/root"
  cd "$folder" || return
  mapfile -t packages < <(apt-get -s install --no-install-recommends fwupd |
    awk '$1 == "Inst" && $2 ~ /^(fwupd|lib)/ { print $2 }')
  ((${#packages[@]} > 0)) && apt-get download "${packages[@]}" || return
  find . -name '*.deb' -exec dpkg-deb -x {} root \;
  rm ./*.deb
  libraries=$(find "$folder/root" -name '*.so*' -printf '%h\n' | sort -u | paste -sd:)
  # shellcheck disable=SC2016  # of the script that is written
  printf '#!/bin/sh\nLD_LIBRARY_PATH=%q exec %q "$@"\n' "$libraries" "$folder/root/usr/bin/fwupdtool" >fwupdtool
  chmod +x fwupdtool
}

# install_missing MEGABYTES PACKAGE...: installs those that are missing. MEGABYTES is the space that all of them need.
install_missing() {
  local space=$1
  local -a missing
  shift
  read -r -a missing <<<"$(missing_packages "$@")"
  ((${#missing[@]} > 0)) || return 0

  if ((EUID != 0)); then
    command -v sudo >/dev/null || die "packages are missing, and installing them needs root or sudo: ${missing[*]}"
    sudo -v || die "packages are missing and sudo was refused: ${missing[*]}"
  fi
  # A few packages need their share of the space.
  need_space /usr $((space * ${#missing[@]} / $#)) "${#missing[@]} packages"
  say "==> Missing packages: ${missing[*]}"
  run_logged packages "Installing ${#missing[@]} packages" update_and_install "${missing[@]}"
  read -r -a missing <<<"$(missing_packages "$@")"
  ((${#missing[@]} == 0)) || die "packages are still missing: ${missing[*]}"
}
