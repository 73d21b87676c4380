# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# bash completion of kxutils; installed as share/bash-completion/completions/kxutils
_kxutils() {
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    local commands='base64 cpu crc dirs inspect label log number path selftest shader stamp tmp verify'
    local options words=
    COMPREPLY=()

    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands --help --version" -- "$word")
        return
    fi

    case $command in
    base64) options='--check --decode --output --wrap -d -o' ;;
    cpu) options='--has' ;;
    crc) options='--check --method --skip --zero -c -z' ;;
    dirs) options='--app --zero -z' ;;
    inspect) options='--offset --zero -z' ;;
    label) options='--color' ;;
    log) options='--file --force --format --level' ;;
    number) options='--read --separator --size' words='group list' ;;
    path) options='--base --zero -z' words='name dir base ext setext rel abs valid expand' ;;
    selftest) options= ;;
    shader) options='--array --header --output -o' words='pack unpack' ;;
    stamp) options='--dry-run --force --offset --zero -z' ;;
    tmp) options='--zero -z' ;;
    verify) options='--ext --offset --quiet --recursive --strict --threads --zero -j -r -z' ;;
    *) return ;;
    esac

    case $previous in
    --base) mapfile -t COMPREPLY < <(compgen -d -- "$word") && return ;;
    --format) words='text html csv' ;;
    --has) words='SSE2 SSE4.2 AVX AVX2 AVX512' ;;
    --level) words='info warning error' ;;
    --method) words='bitwise halfbyte 1byte 4bytes 8bytes all' ;;
    --array | --color | --ext | --offset | --separator | --size | --skip | --threads | --wrap | -j) return ;;
    *)
        if [[ $word == -* ]]; then
            words="$options --help --json -h"
        elif [ "$COMP_CWORD" -gt 2 ]; then
            words=
        fi
        ;;
    esac
    if [ -n "$words" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    fi
}
complete -F _kxutils kxutils
