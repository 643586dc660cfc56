# Completion of hxsso for bash: commands, their options, and the servers' names.

_hxsso()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words='login logout status whoami token servers doctor configure install --help --version'
    elif [[ ${COMP_WORDS[1]} == doctor ]]; then
        words='--config --search --load --log --timeout --verbose --json --help --version'
    elif [[ $before == --server ]]; then
        # Asks no network.
        words=$("${COMP_WORDS[0]}" servers 2> /dev/null | sed -n 's/^[* ] \([^,]*\), .*/\1/p')
    elif [[ $before == --@(hint|scope|min-valid|issuer|client-id|scopes|redirect-ports|name) ]]; then
        return
    elif [[ $before == --folder ]]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
        return
    else
        case ${COMP_WORDS[1]} in
        login) words='--server --hint --no-browser --device --json --help' ;;
        logout | status | whoami) words='--server --json --help' ;;
        token) words='--server --scope --min-valid --header --show --json --help' ;;
        configure) words='--issuer --client-id --scopes --redirect-ports --name --folder --json --help' ;;
        install) words='--system --remove --folder --json --help' ;;
        servers) words='--json --help' ;;
        esac
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -F _hxsso hxsso
