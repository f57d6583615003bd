# Shared by the scripts in this folder, which source it: messages, packages, and throw-away Wine prefixes.
# shellcheck shell=bash
set -euo pipefail
shopt -s inherit_errexit

ZAVO_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
ZAVO_BIN=$ZAVO_ROOT/build/bin
# What is slow to make and does not depend on the source tree is kept here, under names made from its inputs.
ZAVO_CACHE=${ZAVO_CACHE:-${XDG_CACHE_HOME:-${HOME:?HOME is not set}/.cache}/zavo-office-addin}
# The display of whoever called. Wine's programs see it only where a script says so.
ZAVO_USER_DISPLAY=${DISPLAY:-}

# Wine programs take an interrupt for themselves and end; the script has to end too. Its EXIT trap cleans up.
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

step() { printf '==> %s\n' "$*" >&2; }

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# --- Packages ---------------------------------------------------------------------------------------------------------

declare -A ZAVO_PACKAGES=(
    [build]="cmake ninja-build g++-mingw-w64-x86-64-posix mingw-w64-tools googletest"
    [engine]="g++ libz-mingw-w64-dev zlib1g-dev"
    [wine]="wine wine64 fonts-wine"
    [render]="libreoffice-writer-nogui libreoffice-calc-nogui libreoffice-impress-nogui python3-uno poppler-utils
        fonts-liberation fonts-symbola fonts-wqy-microhei"
    [screen]="xvfb fonts-noto-core fonts-wqy-microhei"
    [test]="qpdf xdotool python3-pefile python3-pil"
    [corpus]="python3-pikepdf python3-pil qpdf poppler-utils"
    [peers]="qpdf poppler-utils mupdf-tools pdftk-java"
    [fuzzer]="clang-14 libclang-rt-14-dev"
    [gallery]="python3-pil"
    [icons]="librsvg2-bin python3-pil"
    [package]="wixl msitools python3-pefile"
    [sign]="osslsigncode openssl"
    [lint]="clang-14 clang-format-14 clang-tidy-14 git"
    # Manuals with bookmarks, links and named destinations; only their files are wanted, see unpack_packages.
    [manuals]="auto-multiple-choice-doc-pdf bash-doc debmake-doc developers-reference gutenprint-doc maint-guide
        nauty-doc python-reportlab-doc r-doc-pdf why3-doc-pdf"
    [large-manuals]="lilypond-doc-pdf r-doc-pdf texlive-humanities-doc texlive-latex-base-doc
        texlive-latex-recommended-doc"
)

# Installs what is missing of the named groups; says so only when there is something to install.
need_packages() {
    local group package missing=()
    for group; do
        for package in ${ZAVO_PACKAGES[$group]}; do
            [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
        done
    done
    ((${#missing[@]})) || return 0

    command -v apt-get >/dev/null || fail "this needs Debian's packages ${missing[*]}"
    local as_root=()
    if ((EUID != 0)); then
        command -v sudo >/dev/null || fail "please install as root: apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    step "Installing ${#missing[@]} packages: ${missing[*]}"
    local log=$ZAVO_CACHE/install.log
    mkdir -p "$ZAVO_CACHE"
    if ! { "${as_root[@]}" apt-get update &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y --no-install-recommends "${missing[@]}"; } \
        >"$log" 2>&1 </dev/null; then
        tail -n 5 "$log" >&2
        fail "installing ${missing[*]} failed, see $log"
    fi
}

# Downloads the packages of a group and unpacks them in the cache, without installing them and what they need. Prints
# the folder. It needs no root where the lists of packages are there.
unpack_packages() {
    local packages key folder
    read -ra packages <<<"${ZAVO_PACKAGES[$1]//$'\n'/ }"
    key=$(printf '%s' "${packages[*]}" "$(. /etc/os-release && printf '%s' "$VERSION_ID")" | sha256sum | cut -c1-16)
    folder=$ZAVO_CACHE/packages-$1-$key
    if [[ ! -d $folder ]]; then
        step "Downloading ${#packages[@]} packages for their files: ${packages[*]}"
        mkdir -p "$ZAVO_CACHE"
        local fresh log=$ZAVO_CACHE/download.log archive
        fresh=$(mktemp -d "$ZAVO_CACHE/packages-new.XXXXXX")
        chmod 755 "$fresh"
        if ! (cd "$fresh" && { apt-get download "${packages[@]}" ||
            { apt-get update && apt-get download "${packages[@]}"; }; }) >"$log" 2>&1 </dev/null; then
            rm -rf "$fresh"
            tail -n 5 "$log" >&2
            fail "downloading ${packages[*]} failed, see $log"
        fi
        for archive in "$fresh"/*.deb; do
            dpkg-deb -x "$archive" "$fresh/files" || { rm -rf "$fresh"; fail "${archive##*/} cannot be unpacked"; }
            rm "$archive"
        done
        # Another run may have been faster; its folder is as good.
        mv -T "$fresh/files" "$folder" 2>/dev/null || true
        rm -rf "$fresh"
    fi
    printf '%s\n' "$folder"
}

# --- Wine -------------------------------------------------------------------------------------------------------------

# What every Wine process needs: no questions, no debugger that waits for a user, no mono or gecko, no entries in the
# user's own menus, and a UTF-8 locale, without which file names beyond ASCII do not open.
wine_environment() {
    export WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES="mscoree,mshtml=;winedbg.exe,winemenubuilder.exe=d;mapi32=n,b"
    unset "${!LC_@}"
    export LC_ALL='' LANG=C.UTF-8
    export OANOCACHE=1  # freed texts are freed at once, so that tests can count them
    unset DISPLAY
}

# The Windows form of a Linux path.
windows_path() {
    local path
    path=$(realpath -ms -- "$1")
    printf 'Z:%s' "${path//\//\\}"
}

# Prints the folder of a ready prefix that others are copied from. It is made once for a version of Wine and of this
# recipe: Windows 10, dialogs without a display, fonts for those that come with Windows, with smooth edges (in grey,
# which looks the same on every screen), a user's folders of its own instead of links to the home folder.
wine_template() {
    local recipe key template
    recipe=$(declare -f wine_template wine_environment)
    key=$(printf '%s' "$(wine --version) $recipe" | sha256sum | cut -c1-16)
    template=$ZAVO_CACHE/wine-template-$key
    if [[ ! -d $template ]]; then
        step "Preparing a Wine prefix (once)"
        mkdir -p "$ZAVO_CACHE"
        local fresh
        fresh=$(mktemp -d "$ZAVO_CACHE/wine-template-new.XXXXXX")
        (
            trap 'exit 130' HUP INT TERM
            export WINEPREFIX=$fresh
            local log=$ZAVO_CACHE/wine-template.log folder
            cat >"$fresh/settings.reg" <<'END'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine\Drivers]
"Graphics"="null"

[HKEY_CURRENT_USER\Software\Wine\Fonts\Replacements]
"Segoe UI"="Noto Sans"
"Yu Gothic UI"="WenQuanYi Micro Hei"
"Microsoft YaHei UI"="WenQuanYi Micro Hei"
"Microsoft JhengHei UI"="WenQuanYi Micro Hei"
"Malgun Gothic"="WenQuanYi Micro Hei"
"MS UI Gothic"="WenQuanYi Micro Hei"

[HKEY_CURRENT_USER\Control Panel\Desktop]
"FontSmoothing"="2"
"FontSmoothingType"=dword:00000001
"FontSmoothingGamma"=dword:00000578
"FontSmoothingOrientation"=dword:00000001
END
            {
                wine wineboot.exe -i &&
                    wine reg.exe import "$(windows_path "$fresh/settings.reg")" &&
                    wine reg.exe add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink' /f \
                        /v 'Noto Sans Regular' /t REG_MULTI_SZ /d \
                        'wqy-microhei.ttc,WenQuanYi Micro Hei\0NotoSansArabic-Regular.ttf,Noto Sans Arabic' &&
                    wine winecfg.exe /v win10 &&
                    wineserver -w
            } >"$log" 2>&1 </dev/null || fail "Wine could not make a prefix, see $log"
            # What is on the buttons of frames is a font of Wine's, which Debian puts where Wine does not look.
            cp /usr/share/wine/fonts/marlett.ttf "$fresh/drive_c/windows/Fonts/"
            for folder in "$fresh"/drive_c/users/*/*; do
                if [[ -L $folder ]]; then
                    rm "$folder"
                    mkdir "$folder"
                fi
            done
        ) || { rm -rf "$fresh"; exit 1; }
        # Another run may have been faster; its template is as good.
        mv -T "$fresh" "$template" 2>/dev/null || rm -rf "$fresh"
    fi
    touch "$template"
    printf '%s' "$template"
}

ZAVO_RUN=         # the folder of this run
ZAVO_PREFIXES=()  # its Wine prefixes
ZAVO_HELPERS=()   # the ids of other processes that it started

# Makes the folder of this run, unless it is there. When the script ends, all that was started ends and the folder goes.
run_start() {
    [[ -z $ZAVO_RUN ]] || return 0
    mkdir -p "$ZAVO_CACHE/runs"
    # What killed runs left behind, and templates that nobody used for a week.
    find "$ZAVO_CACHE/runs" "$ZAVO_CACHE" -mindepth 1 -maxdepth 1 \
        \( -path '*/runs/*' -mtime +1 -o -name 'wine-template-new.*' -mtime +1 -o -name 'wine-template-*' -mtime +7 \) \
        -exec rm -rf {} + 2>/dev/null || true
    ZAVO_RUN=$(mktemp -d "$ZAVO_CACHE/runs/XXXXXX")
    trap run_stop EXIT
}

run_stop() {
    local prefix
    for prefix in "${ZAVO_PREFIXES[@]}"; do
        WINEPREFIX=$prefix wineserver -k 2>/dev/null || true
    done
    if ((${#ZAVO_HELPERS[@]})); then
        kill "${ZAVO_HELPERS[@]}" 2>/dev/null || true
        wait "${ZAVO_HELPERS[@]}" 2>/dev/null || true
    fi
    rm -rf "$ZAVO_RUN"
}

# Copies the template to that folder. Files are shared with it by hard links, but for the registry, which Wine writes in
# place.
wine_prefix() {
    local template
    template=$(wine_template)
    cp -al "$template" "$1"
    rm "$1"/*.reg
    cp -p "$template"/*.reg "$1"/
    ZAVO_PREFIXES+=("$1")
}

# Keeps a session's server alive: without a program that stays, its first captured Wine call would wait for Wine's
# services to end.
wine_keep_alive() { (setsid wine "$ZAVO_BIN/keepalive.exe" </dev/null >/dev/null 2>&1 &); }

# Starts a Wine session for this run, without a display, and sets WINEPREFIX to its prefix.
wine_start() {
    wine_environment
    run_start
    wine_prefix "$ZAVO_RUN/prefix"
    export WINEPREFIX=$ZAVO_RUN/prefix
    wine_keep_alive
}

# Starts a Wine session besides, in which nothing but the installer works, and sets ZAVO_INSTALLER_PREFIX to its prefix.
installer_start() {
    wine_environment
    run_start
    wine_prefix "$ZAVO_RUN/installer"
    export ZAVO_INSTALLER_PREFIX=$ZAVO_RUN/installer
    WINEPREFIX=$ZAVO_INSTALLER_PREFIX wine_keep_alive
}

# Starts a Wine session whose windows are on a screen, WxH pixels large and seen by nobody, or with --display DISPLAY
# on one that is there already. Sets what on_screen needs, and ZAVO_SCREEN_FRAMEBUFFER, the file in which the screen's
# pixels are at any time, in X's window dump format; there is none of a display that was there already. A script may
# start several.
screen_start() {
    local folder log tries
    wine_environment
    run_start
    folder=$(mktemp -d "$ZAVO_RUN/screen.XXXXXX")
    wine_prefix "$folder/prefix"
    sed -i 's/^"Graphics"="null"$/"Graphics"="x11"/' "$folder/prefix/user.reg"
    export ZAVO_SCREEN_PREFIX=$folder/prefix ZAVO_SCREEN_DISPLAY='' ZAVO_SCREEN_FRAMEBUFFER=''
    if [[ ${1:-} == --display ]]; then
        ZAVO_SCREEN_DISPLAY=$2
        [[ $ZAVO_SCREEN_DISPLAY ]] || fail "there is no display: DISPLAY is not set"
    else
        # Nobody manages windows there, so Wine has to draw their frames itself.
        printf '\n[Software\\\\Wine\\\\X11 Driver]\n"Managed"="N"\n' >>"$folder/prefix/user.reg"
        log=$folder/xvfb.log
        Xvfb -displayfd 3 -fbdir "$folder" -screen 0 "${1:-1280x900}x24" -nolisten tcp -noreset -nocursor \
            3>"$folder/display" </dev/null >"$log" 2>&1 &
        ZAVO_HELPERS+=($!)
        for ((tries = 0; tries < 600; ++tries)); do
            [[ ! -s $folder/display ]] || break
            kill -0 "${ZAVO_HELPERS[-1]}" 2>/dev/null || break
            sleep 0.05
        done
        [[ -s $folder/display ]] || { tail -n 3 "$log" >&2; fail "the screen did not start"; }
        ZAVO_SCREEN_DISPLAY=:$(<"$folder/display")
        ZAVO_SCREEN_FRAMEBUFFER=$folder/Xvfb_screen0
    fi
    on_screen wine_keep_alive
}

# Runs a command, or a function of this file, in the session that screen_start started last.
on_screen() { WINEPREFIX=$ZAVO_SCREEN_PREFIX DISPLAY=$ZAVO_SCREEN_DISPLAY "$@"; }

# Starts the helper through which the stand-ins reach LibreOffice and sets ZAVO_BRIDGE_PORT and ZAVO_BRIDGE_TOKEN, which
# they read.
bridge_start() {
    local port_file=$ZAVO_RUN/bridge.port log=$ZAVO_RUN/bridge.log tries
    TMPDIR=$ZAVO_RUN /usr/bin/python3 "$ZAVO_ROOT/standins/bridge/bridge.py" "$port_file" "$ZAVO_RUN/libreoffice" \
        </dev/null >"$log" 2>&1 &
    ZAVO_HELPERS+=($!)
    for ((tries = 0; tries < 600; ++tries)); do
        if [[ -s $port_file ]]; then
            read -r ZAVO_BRIDGE_PORT ZAVO_BRIDGE_TOKEN <"$port_file" || true  # there is no line end
            export ZAVO_BRIDGE_PORT ZAVO_BRIDGE_TOKEN
            return
        fi
        kill -0 "${ZAVO_HELPERS[-1]}" 2>/dev/null || break
        sleep 0.1
    done
    tail -n 3 "$log" >&2
    fail "LibreOffice did not start"
}

# Asks the bridge; arguments are names and values in turn. Prints the answer's value.
bridge_ask() {
    local connection answer
    exec {connection}<>"/dev/tcp/127.0.0.1/$ZAVO_BRIDGE_PORT"
    { printf '%s\t%s\n' token "$ZAVO_BRIDGE_TOKEN" "$@"; printf '\n'; } >&"$connection"
    IFS= read -r answer <&"$connection" || fail "LibreOffice's helper gave no answer"
    exec {connection}>&-
    [[ $answer == ok$'\t'* ]] || fail "${answer#*$'\t'}"
    [[ -z ${answer#ok$'\t'} ]] || printf '%s\n' "${answer#ok$'\t'}"
}

# Runs a Windows program with its output through a file: a pipe would stay open as long as any program of the session.
run_windows() {
    local status=0
    wine "$@" >"$ZAVO_RUN/out" 2>"$ZAVO_RUN/err" </dev/null || status=$?
    cat "$ZAVO_RUN/out"
    without_remarks "$ZAVO_RUN/err" >&2
    return "$status"
}

# What a Windows program wrote, but for Wine's own remark where the root folder's device may not be read.
without_remarks() { grep -v '^wine: Read access denied for device ' "$1" || true; }

# Writes a number to the registry of this run's prefix: key, value, number.
set_number() {
    wine reg.exe add "$1" /v "$2" /t REG_DWORD /d "$3" /f </dev/null >/dev/null 2>&1 ||
        fail "$2 could not be written to the registry"
}

# Registers the add-in in this run's prefix, and the folder of the companion's stand-in.
register_addin() {
    wine regsvr32.exe /s "$(windows_path "$ZAVO_BIN/zavoofficeaddin.dll")" </dev/null >/dev/null 2>&1 ||
        fail "regsvr32 refused the add-in"
    wine reg.exe add 'HKLM\SOFTWARE\ZAVO' /v InstallPath /d "$(windows_path "$ZAVO_BIN")" /f \
        </dev/null >/dev/null 2>&1 || fail "the companion's folder could not be written to the registry"
}

# Makes the Word stand-in the server of Word.Application in this run's prefix, which Outlook's buttons start.
register_word() {
    wine "$ZAVO_BIN/word-server.exe" /RegServer </dev/null >/dev/null 2>&1 || fail "Word's stand-in was not registered"
}
