# Sourced by the scripts. `step NAME COMMAND...` announces a step, runs it, and ends the script where it fails. The
# shell does not end inside COMMAND, whatever `set -e` says: a function returns its failures itself.
step() {
    stepName=$1
    shift
    printf '\n== %s\n' "$stepName"
    "$@" || {
        printf '\nstep failed: %s\n' "$stepName" >&2
        exit 1
    }
}
