# Holds the man page PAGE against what PROGRAM says with --help: the same options with the same values in the same order
# under OPTIONS, all of them but help and version in the synopsis, and the same arguments behind them.

cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/../support/run.cmake)

# plain(TEXT RESULT): what a line of either shows, without fonts, quotes, brackets and spaces.
function(plain text result)
    string(REGEX REPLACE "^[.](BR|BI|RB|RI|IR|IB|B|I) " "" text "${text}")
    string(REPLACE "\\-" "-" text "${text}")
    string(REGEX REPLACE "[][<>\" ]|[.][.][.]" "" text "${text}")
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

# section(NAME RESULT): the page's lines in a section. Brackets would keep a list from being split.
function(section name result)
    file(READ ${PAGE} page)
    string(REPLACE ";" "," page "${page}")
    string(REGEX REPLACE "[][]" "" page "${page}")
    string(REGEX MATCH "\n[.]SH ${name}\n([^\n]|\n[^.]|\n[.][^S])*" text "${page}")
    string(REGEX MATCHALL "[^\n]+" lines "${text}")
    list(POP_FRONT lines)
    set(${result} "${lines}" PARENT_SCOPE)
endfunction()

run(${PROGRAM} --help)
string(REGEX REPLACE "[][]" "" help "${output}")
string(REPLACE ";" "," help "${help}")
set(helpOptions "")
string(REGEX MATCHALL "\n  -[^\n]*" lines "${help}")
foreach(line IN LISTS lines)
    string(REGEX REPLACE "^\n  ([^ ]+( [^ ]+)*).*" "\\1" line "${line}")
    plain("${line}" line)
    list(APPEND helpOptions "${line}")
endforeach()
list(REMOVE_ITEM helpOptions --help-all) # Qt's own

set(pageOptions "")
set(isOption FALSE)
section(OPTIONS lines)
foreach(line IN LISTS lines)
    if(isOption)
        plain("${line}" option)
        list(APPEND pageOptions "${option}")
    endif()
    string(COMPARE EQUAL "${line}" ".TP" isOption)
endforeach()

set(synopsis "")
section(SYNOPSIS lines)
list(POP_FRONT lines) # the name
foreach(line IN LISTS lines)
    plain("${line}" line)
    string(APPEND synopsis "${line}")
endforeach()
string(REGEX REPLACE "[|]?(--)" ";\\1" synopsis "${synopsis}") # of two that exclude each other a bar stands between
list(POP_FRONT synopsis)
set(expected ${helpOptions})
list(FILTER expected EXCLUDE REGEX "--(help|version)$")
string(REGEX MATCH "^Usage: [^ ]+ options( [^\n]*)?" usage "${help}")
plain("${CMAKE_MATCH_1}" arguments)
set(expectedSynopsis "${expected}")
string(APPEND expectedSynopsis "${arguments}")

if(NOT helpOptions OR NOT pageOptions STREQUAL helpOptions)
    message(FATAL_ERROR "${PAGE} has under OPTIONS\n  ${pageOptions}\nwhile --help has\n  ${helpOptions}")
endif()
section(COMMANDS commands)
if(commands) # a synopsis for each of them: only which options they have between them can be compared
    foreach(list IN ITEMS synopsis expectedSynopsis)
        string(REGEX MATCHALL "--[a-z]+(-[a-z]+)*" ${list} "${${list}}")
        list(REMOVE_DUPLICATES ${list})
        list(SORT ${list})
    endforeach()
endif()
if(NOT synopsis STREQUAL expectedSynopsis)
    message(FATAL_ERROR "${PAGE} has in its synopsis\n  ${synopsis}\nwhile --help has\n  ${expectedSynopsis}")
endif()
