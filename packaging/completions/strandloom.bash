# SPDX-License-Identifier: MIT
# Completion for bash.
_strandloom()
{
    local cur prev words cword
    _init_completion -s || return

    case $prev in
    --format) COMPREPLY=($(compgen -W 'text markdown pdf json netscape' -- "$cur")) ;;
    --range) COMPREPLY=($(compgen -W 'today yesterday last7Days last30Days all' -- "$cur")) ;;
    --layout) COMPREPLY=($(compgen -W 'window compact' -- "$cur")) ;;
    --output) _filedir ;;
    --search | --limit | --url) ;;
    *) false ;;
    esac && return

    if [[ $cword -eq 1 ]]; then
        COMPREPLY=($(compgen -W 'list search add open remove export import backup restore digest
            inspect doctor --background --settings --export --quit --pause --resume --help
            --version' -- "$cur"))
        return
    fi
    local options
    case ${words[1]} in
    list) options='--json --search --limit' ;;
    search) options='--json --limit' ;;
    import | doctor) options=--json ;;
    export) options='--format --output --range --search --layout --hide' ;;
    backup) options=--force ;;
    digest) options=--output ;;
    inspect) options=--url ;;
    esac
    options+=' --help'
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    elif [[ ${words[1]} == @(import|backup|restore|inspect) ]]; then
        _filedir
    fi
} && complete -F _strandloom strandloom
