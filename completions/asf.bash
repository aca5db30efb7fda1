# Bash completion for asf.
_asf()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "$(asf --help 2> /dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\) .*/\1/p') --help --version" -- "$word")
    elif [ "$before" = --view ]; then
        mapfile -t COMPREPLY < <(compgen -W "front side top all" -- "$word")
    elif [ "$before" = --from ] || [ "$before" = --to ]; then
        mapfile -t COMPREPLY < <(compgen -W "asf amc bvh glb gltf$([ "$before" = --to ] && echo " npz csv")$([ "$command" = batch ] && echo " none")" -- "$word")
    elif [ "$before" = --filter ]; then
        mapfile -t COMPREPLY < <(compgen -W "none unroll gimbal" -- "$word")
    elif [ "$before" = --translations ]; then
        mapfile -t COMPREPLY < <(compgen -W "moving none all" -- "$word")
    elif [ "$before" = --up ]; then
        mapfile -t COMPREPLY < <(compgen -W "y z" -- "$word")
    elif [ "$before" = --space ]; then
        mapfile -t COMPREPLY < <(compgen -W "local world" -- "$word")
    elif [ "$before" = --as ]; then
        mapfile -t COMPREPLY < <(compgen -W "quat matrix 6d axis-angle euler" -- "$word")
    elif [ "$before" = --order ]; then
        mapfile -t COMPREPLY < <(compgen -W "XYZ XZY YXZ YZX ZXY ZYX XYX XZX YXY YZY ZXZ ZYZ" -- "$word")
    elif [ "$before" = --preset ]; then
        mapfile -t COMPREPLY < <(compgen -W "motion-imitation" -- "$word")
    elif [ "$before" = --units ]; then
        mapfile -t COMPREPLY < <(compgen -W "cm m in file" -- "$word")
    elif [ "$before" = --mesh ]; then
        mapfile -t COMPREPLY < <(compgen -W "bones none" -- "$word")
    elif [ "$before" = --base-pose ]; then
        mapfile -t COMPREPLY < <(compgen -W "rest first-frame" -- "$word")
    elif [ "$before" = --on-collision ]; then
        mapfile -t COMPREPLY < <(compgen -W "fail suffix" -- "$word")
    elif [ "$before" = --only ]; then
        mapfile -t COMPREPLY < <(compgen -W "errors warnings" -- "$word")
    elif [ "$before" = --ignore ]; then
        mapfile -t COMPREPLY < <(compgen -W "names parents rest lengths dofs limits frames rate duration positions" -- "$word")
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(asf "$command" --help 2> /dev/null | grep -o -- '--[a-z][a-z-]*' | sort -u)" -- "$word")
    fi
}
complete -o default -F _asf asf
