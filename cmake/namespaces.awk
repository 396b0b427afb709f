# Prints each line that keeps a nameless namespace apart from the one around it.

FNR == 1 { before = last = "" }
last == "" && before ~ /^namespace .*[{]$/ && /^namespace [{]/ { print FILENAME ":" FNR - 1 ": an empty line too many" }
last == "" && before == "}  // namespace" && /^}  \/\/ namespace / { print FILENAME ":" FNR - 1 ": an empty line too many" }
{ before = last; last = $0 }
