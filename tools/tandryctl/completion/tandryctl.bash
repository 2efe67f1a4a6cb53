# Completion of tandryctl for bash.

_tandryctl() {
    local here=${BASH_SOURCE[0]%/*} candidates value
    COMPREPLY=()
    mapfile -t candidates < <("$here/../../tandryctl/complete" "${COMP_WORDS[@]:0:COMP_CWORD+1}" 2>/dev/null)
    if [[ ${candidates[0]-} == :files ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
        return
    fi
    for value in "${candidates[@]}"; do
        COMPREPLY+=("${value%%$'\t'*}")
    done
}
complete -F _tandryctl tandryctl
