# Stops the build when a file of a layer includes a header of a layer it does not use.
# LAYER: its name; FAMILIES: the families whose headers it may include; FILES: its files; STAMP: touched on success.

foreach(file IN LISTS FILES)
    file(STRINGS ${file} includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[^\"]*\\.h\"")
    foreach(line IN LISTS includes)
        string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*$" "\\1" header "${line}")
        set(allowed FALSE)
        foreach(family IN LISTS FAMILIES)
            if(header MATCHES "^${family}(_[A-Za-z0-9_]+)?(\\.tab)?\\.h$")
                set(allowed TRUE)
            endif()
        endforeach()
        if(NOT allowed)
            message(FATAL_ERROR "${file}: layer ${LAYER} may not include \"${header}\"")
        endif()
    endforeach()
endforeach()
file(TOUCH ${STAMP})
