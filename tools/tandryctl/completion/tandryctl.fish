# Completion of tandryctl for fish.

set -g __tandryctl_complete (status dirname)/../../tandryctl/complete

function __tandryctl_candidates
    set -l current (commandline -ct)
    set -l lines ($__tandryctl_complete (commandline -opc) "$current" 2>/dev/null)
    if test "$lines[1]" = :files
        __fish_complete_path "$current"
    else
        string join \n -- $lines
    end
end
complete -c tandryctl -f -a '(__tandryctl_candidates)'
