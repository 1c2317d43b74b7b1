# Completion of tarn for fish.

set -l commands check print list get set add remove merge stats tree report help

complete -c tarn -n "not __fish_seen_subcommand_from $commands" -f -a "$commands"
complete -c tarn -n "__fish_seen_subcommand_from help" -f -a "$commands"
complete -c tarn -l help -d "Print help"
complete -c tarn -n "not __fish_seen_subcommand_from $commands" -l version -d "Print the version"
complete -c tarn -l log-level -x -a "debug info error none" -d "Log lines from this level on"
complete -c tarn -l color -x -a "auto always never" -d "Colour the output"

complete -c tarn -n "__fish_seen_subcommand_from check" -l all -d "Report every violation"
complete -c tarn -n "__fish_seen_subcommand_from check" -l limit -x -d "Most violations for a file"
complete -c tarn -n "__fish_seen_subcommand_from check" -l format -x -a "text json sarif junit" -d "What to write"
complete -c tarn -n "__fish_seen_subcommand_from check stats" -l json -d "Write JSON"
complete -c tarn -n "__fish_seen_subcommand_from check" -l strict -d "Also what other XML parsers refuse"
complete -c tarn -n "__fish_seen_subcommand_from check" -l jobs -x -d "Documents at a time"

complete -c tarn -n "__fish_seen_subcommand_from list" -l class -x -d "Of this class"
complete -c tarn -n "__fish_seen_subcommand_from list" -l version -x -d "Of this version"
complete -c tarn -n "__fish_seen_subcommand_from list" -l p -x -d "With this parameter"
complete -c tarn -n "__fish_seen_subcommand_from list" -l format -x -a "table tsv json dn" -d "Form of the list"
complete -c tarn -n "__fish_seen_subcommand_from list set tree" -l dn -x -d "With this text in the name"
complete -c tarn -n "__fish_seen_subcommand_from list set" -l operation -x -a "create delete update auto" -d "With this operation"
complete -c tarn -n "__fish_seen_subcommand_from list set" -l mask -r -d "That match the first object of this document"

complete -c tarn -n "__fish_seen_subcommand_from set" -l mask-class -x -d "Of this class"
complete -c tarn -n "__fish_seen_subcommand_from set" -l mask-version -x -d "Of this version"
complete -c tarn -n "__fish_seen_subcommand_from set" -l mask-p -x -d "With this parameter"
complete -c tarn -n "__fish_seen_subcommand_from set" -l class -x -d "The new class"
complete -c tarn -n "__fish_seen_subcommand_from set" -l version -x -d "The new version"
complete -c tarn -n "__fish_seen_subcommand_from set" -l p -x -d "A new value"
complete -c tarn -n "__fish_seen_subcommand_from set" -l values -r -d "Document with the new values"

complete -c tarn -n "__fish_seen_subcommand_from print set add remove merge report" -s o -l output -r -d "File for the result"
complete -c tarn -n "__fish_seen_subcommand_from set add remove merge" -l in-place -d "Replace the document with the result"
complete -c tarn -n "__fish_seen_subcommand_from merge" -l check-only -d "Write nothing"
complete -c tarn -n "__fish_seen_subcommand_from merge" -l validate -d "Validate source, deltas and result"
complete -c tarn -n "__fish_seen_subcommand_from tree" -l depth -x -d "Segments to draw"
