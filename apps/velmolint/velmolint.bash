# Completion of velmolint for bash.
_velmolint() {
    local current=${COMP_WORDS[COMP_CWORD]}
    local previous=${COMP_WORDS[COMP_CWORD - 1]}
    local words
    case $previous in
    --format) words="text json github" ;;
    --source | --prefix) return ;;
    *)
        if [[ $current != -* ]]; then
            compopt -o default
            COMPREPLY=()
            return
        fi
        words="--source --prefix --format --help --version"
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -F _velmolint velmolint
