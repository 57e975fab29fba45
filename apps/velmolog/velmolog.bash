# Completion of velmolog for bash.
_velmolog() {
    local current=${COMP_WORDS[COMP_CWORD]}
    local previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands="show stats check rescue diff html"
    local filters="--severity --type --source --arg --text"
    local not_filters="--not-severity --not-type --not-source --not-arg --not-text"
    local limits="--first --last"
    local texts="--locale-dir --config-dir --prefix --lang"
    local command=show options words=""
    if [[ " $commands " == *" ${COMP_WORDS[1]} "* ]] && ((COMP_CWORD > 1)); then
        command=${COMP_WORDS[1]}
    fi
    case $command in
    show) options="$limits --follow --observed --format" ;;
    stats | diff) options="$limits --format" ;;
    check) options="--format" ;;
    rescue | html) options="$limits --output" ;;
    esac
    case $previous in
    --format)
        case $command in
        show) words="line json xml" ;;
        stats | check | diff) words="line json" ;;
        esac
        ;;
    --severity | --not-severity) words="none info warning error critical" ;;
    --type | --source | --arg | --text | --not-type | --not-source | --not-arg | --not-text) return ;;
    --first | --last | --prefix | --lang) return ;;
    --locale-dir | --config-dir)
        compopt -o dirnames
        COMPREPLY=()
        return
        ;;
    *)
        if [[ $current == -* ]]; then
            words="$filters $not_filters $texts $options --help"
            ((COMP_CWORD > 1)) || words="$words --version"
        else
            compopt -o default
            ((COMP_CWORD == 1)) || commands=""
            words=$commands
        fi
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -F _velmolog velmolog
