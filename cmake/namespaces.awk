# Prints each empty line between the braces of a nameless namespace and those of the namespace around it.

FNR == 1 { before = last = "" }
last == "" && before ~ /^namespace .*[{]$/ && /^namespace [{]/ { print FILENAME ":" FNR - 1 ": superfluous empty line" }
last == "" && before == "}  // namespace" && /^}  \/\/ namespace / { print FILENAME ":" FNR - 1 ": superfluous empty line" }
{ before = last; last = $0 }
