#!/usr/bin/env bash
# The .deb files in a clean Debian: installed, used by a program in C and by one in Python, removed.
#
#   scripts/try_packages.sh PACKAGES ROOT
#
# PACKAGES is the folder that cpack filled. ROOT is made by debootstrap unless it is there. Needs root
# and a Debian mirror, so ./test does not run it.
set -euo pipefail
packages=$1 root=$2
[[ -d $root/etc ]] || debootstrap --variant=minbase bookworm "$root"
inside() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
  DEBIAN_FRONTEND=noninteractive "$@"; }
own=(libmp4judge1 libmp4judge-dev mp4judge python3-mp4judge)

rm -rf "$root/new" && mkdir "$root/new"
cp "$packages"/*.deb "$root/new"
cat >"$root/new/host.c" <<'PROGRAM'
#include <mp4judge/mp4judge.h>
#include <stdio.h>

int main(int argc, char** argv) {
  mp4judge_report* report = argc == 2 ? mp4judge_inspect_path(argv[1], NULL) : NULL;
  mp4judge_verdict verdict = mp4judge_report_verdict(report);
  const char* reason = mp4judge_report_reason(report);
  printf("%s%s%s\n", mp4judge_verdict_name(verdict), reason ? ": " : "", reason ? reason : "");
  mp4judge_report_free(report);
  return (int)verdict;
}
PROGRAM
cat >"$root/new/host.py" <<'PROGRAM'
import sys

import mp4judge

report = mp4judge.inspect(sys.argv[1])
print(report)
for box in mp4judge.tree(sys.argv[1]).walk():
    print(box)
for one in report.evidence:
    print(one.offset, one.box_path, one.text)
PROGRAM

inside apt-get -q update
inside find / -xdev -not -path '/proc/*' -name '*mp4judge*' -not -path '/new/*' | (! grep .)
inside sh -c 'apt-get -qy install --no-install-recommends /new/*.deb gcc libc6-dev pkg-config'
inside mp4judge --version
printf '\0\0\0\x14ftypisom\0\0\0\0isom\0\0\0\x08moov' >"$root/new/film.mp4"
inside mp4judge /new/film.mp4 || (($? == 2))
inside sh -ec 'cd /new && cc -std=c99 -Wall -Werror host.c -o host $(pkg-config --cflags --libs mp4judge)'
inside /new/host /new/film.mp4 || (($? == 2))
inside python3 -W error /new/host.py /new/film.mp4
[[ $(inside python3 -m mp4judge --version) == $(inside mp4judge --version) ]]
inside test -f /usr/share/man/man1/mp4judge.1.gz || inside dpkg -L mp4judge | grep -q man1
inside apt-get -qy purge "${own[@]}"
# Nothing stays behind.
left=$(inside find /usr /etc /var/lib/dpkg/info -name '*mp4judge*')
[[ -z $left ]] || { echo "FAILED: left behind: $left"; exit 1; }
echo "installed, used and removed"
