# Doxygen sees the headers through this: what a folder declares belongs to the topic of that folder, and a comment that
# stands by itself in a class, "    // Title.", a blank line after it, heads the functions that follow.
function flush_heading(   i) {
    if (count == 0) return
    if (!was_blank || !in_public) {  # an ordinary comment
        for (i = 1; i <= count; ++i) print block[i]
    } else {
        if (open) print "    /// @}"
        title = block[1]
        sub(/^ *\/\/ /, "", title)
        sub(/\.$/, "", title)
        print "    /// @name " title
        for (i = 2; i <= count; ++i) { sub(/\/\//, "///", block[i]); print block[i] }
        print "    /// @{"
        open = 1
    }
    count = 0
}
FNR == 1 {
    folder = FILENAME
    sub(/^.*kalvio\//, "", folder)
    topic = folder ~ /\// ? folder : "text"
    sub(/\/.*/, "", topic)
    open = count = in_public = 0
}
/^    \/\/( |$)/ { block[++count] = $0; was_blank = 0; next }
{ was_blank = $0 == ""; flush_heading() }
/^public:/ { in_public = 1 }
/^(protected|private):/ || /^};/ { if (open) print "    /// @}"; open = 0; in_public = 0 }
(/^}  \/\/ namespace/ || /^}$/ && before ~ /^class .*;$/) && grouped { print "/// @}"; grouped = 0 }
{ print; before = $0 }
/^namespace Kalvio::Math[A-Za-z:]* \{/ && !/detail/ { print "\n/// @addtogroup " topic "\n/// @{"; grouped = 1 }
END { if (grouped) print "/// @}" }
