# Prints each line of a CMake file whose indentation differs from the rules: two spaces for each block, two more for the
# arguments of a command, and two more for the values of a keyword. Strings of several lines are not checked.

FNR == 1 { depth = 0; level = 0; text = 0 }

function report(what) { print FILENAME ":" FNR ": " what }

# Returns the line without strings and comments. Sets `text` if the line ends within a string.
function bare(line, kept, i, c) {
    kept = ""
    for (i = 1; i <= length(line); ++i) {
        c = substr(line, i, 1)
        if (c == "\\") ++i
        else if (c == "\"") text = !text
        else if (!text && c == "#") break
        else if (!text) kept = kept c
    }
    return kept
}

{
    if (length($0) > 120) report("longer than 120 columns")
    if ($0 ~ /[ \t]$/) report("blanks at the end")
    began_in_text = text
    code = bare($0)
    match($0, /^[ \t]*/)
    indent = RLENGTH
    if (level == 0 && code ~ /^ *(else|elseif|endif|endforeach|endfunction|endmacro|endwhile)\(/) --depth
    wanted = 2 * depth + (level > 0 ? 2 : 0)
    if (length($0) > 0 && !began_in_text && indent != wanted && !(level > 0 && indent == wanted + 2)) report("indented by " indent ", not by " wanted)
    if (level == 0 && code ~ /^ *(if|else|elseif|foreach|function|macro|while)\(/) ++depth
    level += gsub(/\(/, "", code) - gsub(/\)/, "", code)
}
