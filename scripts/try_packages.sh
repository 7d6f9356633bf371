#!/usr/bin/env bash
# The .deb files in a clean Debian: installed, used by a program in C and by one in Python, removed.
#
#   scripts/try_packages.sh PACKAGES ROOT
#
# PACKAGES is the folder that cpack filled. ROOT is made by debootstrap unless it is there. Needs root,
# a Debian mirror and the samples that ./judge makes, so ./test does not run it.
set -euo pipefail
packages=$1 root=$2
[[ -d $root/etc ]] || debootstrap --variant=minbase bookworm "$root"
inside() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
  DEBIAN_FRONTEND=noninteractive "$@"; }
own=(libmp4judge1 libmp4judge-dev mp4judge python3-mp4judge)

rm -rf "$root/new" && mkdir "$root/new"
cp "$packages"/*.deb "$root/new"
# The programs are those of the pages.
source=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/..
first_block() { # first_block LANGUAGE PAGE
  awk -v start="^\`\`\`$1( |\$)" '$0 ~ start {on = 1; next} /^```/ && on {exit} on' "$2"
}
first_block c "$source/README.md" >"$root/new/judge.c"
first_block c "$source/docs/host.md" >"$root/new/host.c"
first_block cpp "$source/README.md" >"$root/new/samples.cpp"
first_block python "$source/bindings/python/README.md" >"$root/new/judge.py"

inside apt-get -q update
inside find / -xdev -not -path '/proc/*' -name '*mp4judge*' -not -path '/new/*' | (! grep .)
inside sh -c 'apt-get -qy install --no-install-recommends /new/*.deb gcc g++ libc6-dev pkg-config'
inside mp4judge --version
cp "$(find "$source/build" -maxdepth 2 -name samples | head -1)"/*.m4a "$root/new"
cp "$root/new/clear.m4a" "$root/new/film.mp4"
judges() { # judges STATUS COMMAND...
  local code=0 want=$1
  shift
  inside "$@" || code=$?
  ((code == want)) || { echo "FAILED: $* ends with $code, not $want"; exit 1; }
}
judges 0 mp4judge /new/clear.m4a
judges 1 mp4judge /new/protected.m4a
inside sh -ec 'cd /new && cc -std=c99 -Wall -Werror judge.c -o judge $(pkg-config --cflags --libs mp4judge)
  cc -std=c99 -Wall -Werror host.c -o host $(pkg-config --cflags --libs mp4judge)
  c++ -std=c++17 -Wall -Werror samples.cpp -o samples $(pkg-config --cflags --libs mp4judge)'
for program in judge host; do
  judges 0 "/new/$program" /new/clear.m4a
  judges 1 "/new/$program" /new/protected.m4a
done
judges 0 /new/samples /new/clear.m4a
judges 0 sh -c 'cd /new && python3 -W error judge.py'
[[ $(inside python3 -m mp4judge --version) == $(inside mp4judge --version) ]]
inside test -f /usr/share/man/man1/mp4judge.1.gz || inside dpkg -L mp4judge | grep -q man1
inside apt-get -qy purge "${own[@]}"
# Nothing stays behind.
left=$(inside find /usr /etc /var/lib/dpkg/info -name '*mp4judge*')
[[ -z $left ]] || { echo "FAILED: left behind: $left"; exit 1; }
echo "installed, used and removed"
