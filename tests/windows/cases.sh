# Counts cases and failures; for scripts that source it.
cases=0 failures=0

# expect NAME COMMAND...: counts a case and reports it if the command fails.
expect() {
  cases=$((cases + 1))
  "${@:2}" || { failures=$((failures + 1)); echo "FAILED: $1" >&2; }
}

# Prints the counts. Fails if a case failed.
report_cases() {
  echo "$cases cases, $failures failed"
  [ "$failures" -eq 0 ]
}
