# ensure_packages PACKAGE...: returns with all of these Debian packages installed, or ends the script.
# Quick when nothing is missing. Systems without dpkg are taken at their word.
# shellcheck shell=bash

installed_packages() {
    # A package dpkg has never heard of makes it fail, and is then simply not in the list.
    dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^installed //p'
}

missing_packages() {
    comm -13 <(installed_packages "$@" | sort -u) <(printf '%s\n' "$@" | sort -u)
}

ensure_packages() {
    command -v dpkg-query >/dev/null || return 0
    local missing
    mapfile -t missing < <(missing_packages "$@")
    if ((${#missing[@]} == 0)); then return; fi

    if ((EUID != 0)); then
        echo "dev: packages are missing; install them and run this again:" >&2
        echo "sudo apt-get install --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
    echo "== installing: ${missing[*]}" >&2
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq >&2
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}
