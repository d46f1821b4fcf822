# The warnings of every target of this project; private, so that users of the library keep their own.
add_library(quorvane_warnings INTERFACE)
target_compile_options(quorvane_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast
    -Wcast-align -Woverloaded-virtual -Wdouble-promotion -Wimplicit-fallthrough -Wswitch-enum
    -Wno-missing-field-initializers)  # fields have initialisers; naming all of them would hide the ones that matter
