#!/usr/bin/env bash
# Installs the Debian packages and locales that building, running and testing ZOLamsadm need.
# Idempotent: installs only what is missing.
set -euo pipefail

packages=(build-essential cmake ninja-build pkg-config
          libnewt-dev libslang2-dev libsqlite3-dev sqlite3
          libvterm-dev libsnmp-dev snmptrapd googletest libgtest-dev libgmock-dev libbenchmark-dev
          whiptail clang-format locales scdoc lintian
          libcurl4-openssl-dev openssl python3-aiosmtpd dovecot-core dovecot-pop3d
          tinyproxy)

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done
if [ "${#missing[@]}" -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# Locales the program and its tests run under (Japanese in UTF-8 and EUC-JP, English).
have=$(locale -a 2>/dev/null | tr 'A-Z' 'a-z' | tr -d '-')
need_locale() {  # name input charset
    local key
    key=$(echo "$1" | tr 'A-Z' 'a-z' | tr -d '-')
    if ! grep -qx "$key" <<<"$have"; then
        echo "Generating locale $1"
        $sudo localedef -i "$2" -f "$3" "$1" || echo "warning: could not generate $1" >&2
    fi
}
need_locale ja_JP.UTF-8 ja_JP UTF-8
need_locale ja_JP.eucJP ja_JP EUC-JP
need_locale en_US.UTF-8 en_US UTF-8
