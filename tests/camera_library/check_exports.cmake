# Fails unless the library exports exactly the functions that the header declares. Also fails unless the header declares
# 22 functions, because the two lists would also be equal if a function were missing from both.
file(READ "${HEADER}" header)
string(REGEX MATCHALL "lmLib[A-Z][A-Za-z]*\\(" declared "${header}")
string(REPLACE "(" "" declared "${declared}")
list(SORT declared)
execute_process(COMMAND "${NM}" -D --defined-only --format=posix "${LIBRARY}"
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${symbols}")
set(exported "")
foreach(line IN LISTS lines)
  string(REGEX REPLACE " .*" "" name "${line}")
  list(APPEND exported "${name}")
endforeach()
list(SORT exported)
list(LENGTH declared count)
if(NOT exported STREQUAL declared OR NOT count EQUAL 22)
  message(FATAL_ERROR "Declared: ${declared}\nExported: ${exported}")
endif()
