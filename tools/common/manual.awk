# Makes a manual page from the text that --help writes. The caller sets `page` (crsctl-find) and `version` (crsctl 1.0).

# Backslashes and hyphens are escaped, and a dot or quote that begins a line.
function roff(text) {
    gsub(/\\/, "\\e", text)
    gsub(/-/, "\\-", text)
    return text ~ /^[.']/ ? "\\&" text : text
}

# The part of an entry after two blanks explains the part before them.
function entry(line, gap) {
    sub(/^ */, "", line)
    gap = match(line, /  +/)
    print ".TP\n\\fB" roff(gap ? substr(line, 1, RSTART - 1) : line) "\\fR"
    if (gap) print roff(substr(line, RSTART + RLENGTH))
}

BEGIN { title["Exit codes"] = "EXIT STATUS" }

/^usage: / {
    usage = usage (usage == "" ? "" : "\n.br\n") roff(substr($0, 8))
    next
}

# A paragraph before the sections. The first is the summary.
section == "" && /^[^ ]/ && !/^[A-Z][a-z ]*:$/ {
    paragraph = paragraph (paragraph == "" ? "" : "\n") roff($0)
    next
}

section == "" && /^$/ { endParagraph(); next }

function endParagraph(summary) {
    if (paragraph == "") return
    if (!named) {
        summary = tolower(substr(paragraph, 1, 1)) substr(paragraph, 2)
        sub(/\.$/, "", summary)
        print ".TH " toupper(roff(page)) " 1 \"\" \"" version "\" \"User Commands\"\n.SH NAME\n" roff(page) " \\- " summary
        print ".SH SYNOPSIS\n" usage "\n.SH DESCRIPTION"
        named = 1
    }
    print ".PP\n" paragraph
    paragraph = ""
}

/^[A-Z][a-z ]*:$/ {
    endParagraph()
    section = substr($0, 1, length($0) - 1)
    print ".SH " (section in title ? title[section] : toupper(section))
    next
}

/^$/ { next }

section == "Examples" {
    line = substr($0, 3)
    if (line ~ /^# /)
        print ".PP\n" roff(substr(line, 3))
    else
        print ".PP\n.RS 4\n.nf\n" roff(line) "\n.fi\n.RE"
    next
}

section == "See also" {
    sub(/^ */, "")
    print roff($0)
    next
}

/^  [^ ]/ { entry($0); next }

{
    sub(/^ */, "")
    print roff($0)
}
