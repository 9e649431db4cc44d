# Writes the hemlark man page (gzipped) from the tool's own help: help2man turns the
# top-level --help into the page, and every command's --help becomes a subsection of
# COMMANDS, so the page never falls behind the tool.
# Run as: cmake -DTOOL=path/to/hemlark -DHELP2MAN=path/to/help2man -DOUTPUT=hemlark.1.gz -P man_page.cmake
cmake_minimum_required(VERSION 3.25)

function(run_tool output)
    execute_process(COMMAND ${TOOL} ${ARGN} OUTPUT_VARIABLE text RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "hemlark ${ARGN} failed: ${status}")
    endif()
    # The usage lines name the program by the path it was run from.
    string(REPLACE "${TOOL}" "hemlark" text "${text}")
    set(${output} "${text}" PARENT_SCOPE)
endfunction()

# roff: backslashes are escaped, and a line that starts with a period or an apostrophe would
# be read as a request.
function(to_roff output text)
    string(REPLACE "\\" "\\e" text "${text}")
    string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" text "${text}")
    set(${output} "${text}" PARENT_SCOPE)
endfunction()

run_tool(overview --help)
string(REGEX MATCH "Subcommands:\n(.*)" commandList "${overview}")
string(REGEX MATCHALL "\n  ([a-z-]+) " commandLines "\n${CMAKE_MATCH_1}")

set(include "[COMMANDS]\nEvery command takes \\fB\\-\\-help\\fR.\n")
foreach(line IN LISTS commandLines)
    string(STRIP "${line}" command)
    run_tool(help ${command} --help)
    to_roff(help "${help}")
    string(APPEND include ".SS ${command}\n.nf\n${help}.fi\n")
endforeach()
string(APPEND include "
[EXIT STATUS]
0 on success, 1 when a design operation fails (the error is printed as
\\fBhemlark: error N: message\\fR), 2 when the command line itself is wrong.

[FILES]
.TP
\\fI/usr/share/hemlark/\\fR
String tables and thread palettes, found beside the installed program.
.TP
\\fIDESIGN.threads\\fR
The thread side file kept beside a design whose format stores no thread colours.

[SEE ALSO]
\\fBhemlark-gui\\fR opens designs in the desktop application, and file managers show
thumbnails of designs drawn by \\fBhemlark-thumbnailer\\fR.
")

get_filename_component(folder "${OUTPUT}" DIRECTORY)
string(REGEX REPLACE "\\.gz$" "" page "${OUTPUT}")
file(WRITE "${folder}/hemlark-man.include" "${include}")
execute_process(
    COMMAND ${HELP2MAN} --no-info --no-discard-stderr
            --name=inspect,\ edit\ and\ convert\ machine-embroidery\ designs
            --include=${folder}/hemlark-man.include --output=${page} ${TOOL}
    RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "help2man failed: ${status}")
endif()
# -n leaves the time stamp out, so the same page gives the same bytes.
execute_process(COMMAND gzip -9 -n -f ${page} RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "gzip failed: ${status}")
endif()
