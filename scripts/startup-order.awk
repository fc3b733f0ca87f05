# Reads a callgrind profile (valgrind --tool=callgrind --demangle=no) of the app from its
# start to its first screen at rest, and the app's log of its QML imports over the same run
# (QT_LOGGING_RULES=qt.qml.import=true), and writes the linker script
# src/app/startup-order.ld: the functions that ran in the app's own binary and the constant
# data the first screen reads, each gathered into a section of its own before the rest of
# the code and constants. scripts/make-startup-order.sh runs it.

# "ob=(3) /path" names object 3 and makes it the current one; "ob=(3)" makes 3 current again.
# "cob=" names an object without making it current. "fn=" is the same for functions, in the
# current object; "cfn=" names a called function.
function remember(kind, line,    id, name) {
    id = line
    sub(/^\(/, "", id)
    sub(/\).*$/, "", id)
    name = line
    if (sub(/^\([0-9]+\) /, "", name))
        names[kind, id] = name
    return id
}

# A function's section name, once, in the order first kept.
function keep(name) {
    if (name in kept)
        return
    kept[name] = 1
    order[++keptCount] = name
}

# One line per kept function, PREFIX NAME SUFFIX, in name order, so that a profile taken
# again changes only what changed.
function printSorted(prefix, suffix,    i) {
    for (i = 1; i <= keptCount; ++i)
        print prefix order[i] suffix | "LC_ALL=C sort"
    close("LC_ALL=C sort")
}

# Every view of the app's own modules that the first screen loads is named in the import log,
# whether or not any of its functions runs.
/qrc:\/qt-project\.org\/imports\/TPCompanion\/[A-Za-z0-9_\/]+\.qml/ {
    match($0, /qrc:\/qt-project\.org\/imports\/TPCompanion\/[A-Za-z0-9_\/]+\.qml/)
    view = substr($0, RSTART + 28, RLENGTH - 32)
    gsub(/\//, "_", view)
    views["_qt_0x2d_project_0x2e_org_imports_" view "_qml"] = 1
    next
}

/^ob=/ { current = names["ob", remember("ob", substr($0, 4))]; next }
/^cob=/ { remember("ob", substr($0, 5)); next }
/^cfn=/ { remember("fn", substr($0, 5)); next }
/^fn=/ {
    id = remember("fn", substr($0, 4))
    if (current ~ /\/tpcompanion$/ && !(id in seen)) {
        seen[id] = 1
        ran[++count] = names["fn", id]
    }
}

END {
    if (count == 0) {
        print "no function of the app ran in the profile" > "/dev/stderr"
        exit 1
    }
    print "/* Made by scripts/make-startup-order.sh: what the app runs and reads from its start to"
    print "   its first screen at rest, ahead of the rest of its code and constants. The kernel"
    print "   maps a program's pages in blocks around each page it touches, so code the first"
    print "   screen never runs stays out of memory only when it is kept apart from code it runs."
    print "   A name that no longer exists matches nothing; run the script again after changing"
    print "   what the first screen does. */"
    print "SECTIONS"
    print "{"
    print "  .text.first_screen :"
    print "  {"
    print "    *(.text.startup .text.startup.*)"
    for (i = 1; i <= count; ++i) {
        name = ran[i]
        # A second symbol of the same name is told apart as NAME'2.
        sub(/'[0-9]+$/, "", name)
        if (name !~ /^[A-Za-z_][A-Za-z0-9_.$]*$/)
            continue
        keep(name)
        # A complete constructor or destructor is an alias of the base one, whose section
        # holds the code.
        if (match(name, /[CD]1[EI]/))
            keep(substr(name, 1, RSTART) "2" substr(name, RSTART + 2))
    }
    printSorted("    *(.text.", ")")
    print "  }"
    print "}"
    print "INSERT BEFORE .text;"
    print ""
    print "SECTIONS"
    print "{"
    print "  .rodata.first_screen :"
    print "  {"
    print "    /* The compiled views the first screen loads. */"
    for (view in views)
        print "    *(.rodata.*" view "7qmlDataE)" | "LC_ALL=C sort"
    close("LC_ALL=C sort")
    print "    /* What start-up reads of every class, type, plugin and resource, whatever runs. */"
    print "    *(.rodata.*qt_meta_stringdata* .rodata.*qt_meta_data* .rodata.*qt_metaTypeArray*)"
    print "    *(.rodata.*QMetaTypeForType* .rodata.*QMetaTypeId2* .rodata._ZTS*)"
    print "    *(.rodata.*qt_plugin_query_metadata*)"
    print "    *(.rodata._ZL18qt_resource_struct .rodata._ZL16qt_resource_name)"
    print "    *qrc_qmake_*(.rodata._ZL16qt_resource_data)"
    print "    /* String constants, 10 KB in all: where a function is inlined, its strings stay in"
    print "       the section named after the copy that does not run. */"
    print "    *(.rodata.str* .rodata.cst* .rodata.*.str* .rodata.*.cst*)"
    print "    /* The other constants of the functions that ran (their jump tables). */"
    printSorted("    *(.rodata.", ")")
    print "  }"
    print "}"
    print "INSERT BEFORE .rodata;"
}
