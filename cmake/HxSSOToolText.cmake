# hxsso_add_tool_text(<target> <namespace> <text file>)
#
# A tool tells its use in one text. It becomes the constant Usage of that namespace in
# the target, and the man page of the tool, which is installed.
#
# The text: a line "name - purpose"; the lines of use; paragraphs; and sections, "Name:"
# with items below, a term and two blanks or more before what it means. Further lines of
# an item are indented deeper.
function(hxsso_add_tool_text target namespace file)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(READ ${file} text)
    cmake_path(GET file STEM tool)
    cmake_path(GET file FILENAME source_name)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/text)
    configure_file(${PROJECT_SOURCE_DIR}/tools/Usage.cpp.in ${folder}/${tool}.cpp @ONLY)
    target_sources(${target} PRIVATE ${folder}/${tool}.cpp)

    # List separators, and what roff takes for commands.
    string(REPLACE ";" "<semicolon>" page "\n${text}")
    string(REPLACE "\\" "\\e" page "${page}")
    string(REPLACE "-" "\\-" page "${page}")
    string(REGEX REPLACE "\nusage: ([^\n]+)\n +([^\n]+)\n" "\nusage: \\1 \\2\n" page "${page}")
    string(REGEX REPLACE "\nusage: ([^\n]+)\n" "\n.SH SYNOPSIS\n\\1\n.SH DESCRIPTION\n" page "${page}")
    string(REGEX MATCHALL "\n[A-Z][a-z ]*:\n" headings "${page}")
    foreach(heading ${headings})
        string(TOUPPER "${heading}" upper)
        string(REGEX REPLACE "\n(.*):\n" "\n.SH \\1\n" upper "${upper}")
        string(REPLACE "${heading}" "${upper}" page "${page}")
    endforeach()
    string(REGEX REPLACE "\n  ([^ \n]+( [^ \n]+)*)  +([^\n]*)" "\n.TP\n.B \\1\n\\3" page "${page}")
    string(REGEX REPLACE "\n  +" "\n" page "${page}")
    # A blank line ends a paragraph, or what stands before a section or nothing.
    string(REGEX REPLACE "\n\n([^.\n])" "\n.PP\n\\1" page "${page}")
    string(REGEX REPLACE "\n\n+" "\n" page "${page}")
    string(REPLACE "<semicolon>" ";" page "${page}")
    string(TOUPPER ${tool} title)
    file(CONFIGURE OUTPUT ${folder}/${tool}.1 @ONLY
        CONTENT ".TH ${title} 1 \"\" \"HxSSOServices ${PROJECT_VERSION}\"\n.SH NAME@page@")
    if(HXSSO_INSTALL)
        install(FILES ${folder}/${tool}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    endif()
endfunction()
