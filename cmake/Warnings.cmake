# The warnings for our own code. Targets link this privately. A switch that lacks a value of its enumeration is an error
# in every build, so that after a value has been added, the compiler names every switch that must handle it.
add_library(lmcaltab_warnings INTERFACE)
if(MSVC)
  target_compile_options(lmcaltab_warnings INTERFACE /W4 /we4062 $<$<BOOL:${LMCALTAB_WARNINGS_AS_ERRORS}>:/WX>)
else()
  target_compile_options(lmcaltab_warnings INTERFACE
    -Wall -Wextra -Werror=switch -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>
    $<$<BOOL:${LMCALTAB_WARNINGS_AS_ERRORS}>:-Werror>)
endif()
