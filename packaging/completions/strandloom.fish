# SPDX-License-Identifier: MIT
# Completion for fish.
complete -c strandloom -f

set -l first __fish_use_subcommand
complete -c strandloom -n $first -l background -d 'Do not open a window'
complete -c strandloom -n $first -l settings -d 'Open the settings'
complete -c strandloom -n $first -l export -d 'Open the export window'
complete -c strandloom -n $first -l quit -d 'End the running program'
complete -c strandloom -n $first -l pause -d 'Capture nothing for now'
complete -c strandloom -n $first -l resume -d 'Capture again'
complete -c strandloom -s h -l help -d 'Show a help'
complete -c strandloom -n $first -s v -l version -d 'Show the version'
complete -c strandloom -n $first -a list -d 'Print the links, newest first'
complete -c strandloom -n $first -a search -d 'Print the links that contain a text'
complete -c strandloom -n $first -a add -d 'Keep addresses'
complete -c strandloom -n $first -a open -d 'Open a link in the browser'
complete -c strandloom -n $first -a remove -d 'Delete links'
complete -c strandloom -n $first -a export -d 'Write links into a file'
complete -c strandloom -n $first -a import -d 'Read bookmarks or a list of addresses'
complete -c strandloom -n $first -a backup -d 'Write a copy of the store'
complete -c strandloom -n $first -a restore -d 'Make a backup the store again'
complete -c strandloom -n $first -a digest -d 'Write the daily mail as HTML'
complete -c strandloom -n $first -a inspect -d 'Print what is read from pages'
complete -c strandloom -n $first -a doctor -d 'Say whether everything works'

set -l in __fish_seen_subcommand_from
complete -c strandloom -n "$in list search import doctor" -l json -d 'As JSON'
complete -c strandloom -n "$in list export" -l search -x -d 'Only those that contain a text'
complete -c strandloom -n "$in list search" -l limit -x -d 'At most that many'
complete -c strandloom -n "$in export" -l format -x -a 'text markdown pdf json netscape'
complete -c strandloom -n "$in export digest" -l output -r -F -d 'The file'
complete -c strandloom -n "$in export" -l range -x -a 'today yesterday last7Days last30Days all'
complete -c strandloom -n "$in export" -l layout -x -a 'window compact'
complete -c strandloom -n "$in export" -l hide -d 'Take them out of the list'
complete -c strandloom -n "$in backup" -l force -d 'Replace the file'
complete -c strandloom -n "$in inspect" -l url -x -d 'The address of files'
complete -c strandloom -n "$in import backup restore inspect" -F
