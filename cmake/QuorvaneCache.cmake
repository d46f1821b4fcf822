# ccache makes a second build of the same sources a matter of seconds; without it everything builds all the same.
find_program(QUORVANE_CCACHE ccache)
if(QUORVANE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${QUORVANE_CCACHE})
endif()
