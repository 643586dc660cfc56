# Completion of hxsso for PowerShell: commands, their options, and the servers' names.
# Dot-source it in your profile:  . "<folder>\hxsso.ps1"

Register-ArgumentCompleter -Native -CommandName hxsso, hxsso.exe, HxSSO.exe -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)

    $words = @($commandAst.CommandElements | ForEach-Object { $_.ToString() })
    # The word that is being written may be among them.
    if ($wordToComplete -ne '') { $words = @($words | Select-Object -SkipLast 1) }
    $options = @{
        login   = '--server', '--hint', '--no-browser', '--device', '--json', '--help'
        logout  = '--server', '--json', '--help'
        status  = '--server', '--json', '--help'
        whoami  = '--server', '--json', '--help'
        token   = '--server', '--scope', '--min-valid', '--header', '--show', '--json', '--help'
        servers = '--json', '--help'
        configure = '--issuer', '--client-id', '--scopes', '--redirect-ports', '--name', '--folder',
                    '--json', '--help'
        install = '--system', '--remove', '--folder', '--json', '--help'
        doctor  = '--config', '--search', '--load', '--log', '--timeout', '--verbose', '--json',
                  '--help', '--version'
    }
    $candidates = if ($words.Count -le 1) {
        'login', 'logout', 'status', 'whoami', 'token', 'servers', 'doctor', 'configure',
        'install', '--help', '--version'
    } elseif ($words[-1] -eq '--server') {
        # Asks no network.
        (& $words[0] servers --json 2> $null | ConvertFrom-Json).result.servers.server
    } elseif ($words[-1] -in '--hint', '--scope', '--min-valid', '--issuer', '--client-id',
        '--scopes', '--redirect-ports', '--name', '--folder', '--config', '--search', '--timeout') {
        @()
    } else {
        $options[$words[1]]
    }
    $candidates | Where-Object { $_ -like "$wordToComplete*" } | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new($_)
    }
}
