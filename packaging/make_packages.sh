#!/usr/bin/env bash
# Makes the Debian packages of a checkout: make_packages.sh ROOT DIRECTORY. The checkout stays as it is: the
# packages are built from a copy of what git knows in DIRECTORY/source, and lie in DIRECTORY then.
set -euo pipefail

root=$1
directory=$2

# A version that grows with each commit, below that of the release.
version_of() {
  local number
  number=$(sed -n 's/^project(Rastrel VERSION \([0-9.]*\) .*/\1/p' "$root/CMakeLists.txt")
  if git -C "$root" rev-parse --git-dir >/dev/null 2>&1; then
    printf '%s~%s+%s\n' "$number" "$(TZ=UTC git -C "$root" log -1 --date=format-local:%Y%m%d%H%M%S --format=%cd)" \
      "$(git -C "$root" log -1 --format=%h)"
  else
    printf '%s\n' "$number"
  fi
}

copy_sources() {
  rm -rf -- "$directory/source"
  mkdir -p -- "$directory/source"
  if git -C "$root" rev-parse --git-dir >/dev/null 2>&1; then
    (cd -- "$root" && git ls-files -z | xargs -0 -r stat --printf '%n\0' 2>/dev/null) |
      tar -C "$root" --null -T - -cf - | tar -C "$directory/source" -xf -
  else
    tar -C "$root" --exclude=./build -cf - . | tar -C "$directory/source" -xf -
  fi
}

version=${RASTREL_PACKAGE_VERSION:-$(version_of)}
copy_sources
cp -R -- "$root/packaging/debian" "$directory/source/debian"
cp -- "$root/packaging/systemd/rastrel-server.service" "$directory/source/debian/rastrel-server.rastrel-server.service"
cp -- "$root/packaging/systemd/user/rastrel-server.service" \
  "$directory/source/debian/rastrel-server.rastrel-server.user.service"
cat >"$directory/source/debian/changelog" <<CHANGES
rastrel ($version) unstable; urgency=medium

  * The state of the sources; see CHANGELOG.md.

 -- Rastrel maintainers <maintainers@rastrel.invalid>  $(git -C "$root" log -1 --date=rfc2822 --format=%cd 2>/dev/null || date -R)
CHANGES
rm -f -- "$directory"/*.deb "$directory"/*.changes "$directory"/*.buildinfo
cd -- "$directory/source"
DEB_BUILD_OPTIONS="parallel=$(nproc) noautodbgsym ${DEB_BUILD_OPTIONS:-}" dpkg-buildpackage --no-sign --build=binary
