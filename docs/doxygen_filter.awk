# SPDX-License-Identifier: Apache-2.0
# Turns the headers' plain comments into Doxygen's. The comment at the top of a header describes the file and, when it
# opens with the name of a class, that class; one behind a member describes the member. Text is passed as it stands: no
# "<" opens a tag and no "@" or "\" a command.
function plain(text) {
    gsub(/[\\@<>&#]/, "\\\\&", text)
    return text
}
function has_class(name,    line, found) {
    while ((getline line < FILENAME) > 0) {
        if (line ~ "^class KORVANE_API " name "( |$)" || line ~ "^class " name "( |$)") {
            found = 1
        }
    }
    close(FILENAME)
    return found
}
function end_of_top() {
    if (top_text == "") {
        return
    }
    print "/// \\file\n" top_text "\n"
    if (match(top_text, /^\/\/\/ [A-Za-z_0-9]+:/)) {
        name = substr(top_text, 5, RLENGTH - 5)
        if (has_class(name)) {
            print "/// \\class " name "\n" top_text "\n"
        }
    }
    top_text = ""
}
/^\/\/ SPDX-License-Identifier/ {
    next
}
!after_top && /^\/\// {
    top_text = top_text "///" plain(substr($0, 3)) "\n"
    next
}
{
    after_top = 1
    end_of_top()
}
/^ *\/\/( |$)/ {
    at = index($0, "//")
    print substr($0, 1, at - 1) "///" plain(substr($0, at + 2))
    next
}
/[;,] +\/\/ / {
    at = match($0, / +\/\/ /)
    print substr($0, 1, at - 1) " ///<" plain(substr($0, at + RLENGTH - 1))
    next
}
{
    print
}
