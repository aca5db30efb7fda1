# Completion of asf for bash.
_asf()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "$(asf --help 2> /dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\) .*/\1/p') --help --version" -- "$word")
    elif [ "$before" = --view ]; then
        mapfile -t COMPREPLY < <(compgen -W "front side top all" -- "$word")
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(asf "$command" --help 2> /dev/null | grep -o -- '--[a-z][a-z-]*' | sort -u)" -- "$word")
    fi
}
complete -o default -F _asf asf
