# One warning level and one language standard for all of our code.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    message(FATAL_ERROR "GCC 12 silently miscompiles coroutines; configure with a preset (clang): cmake --preset dev")
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Designated initializers name only the fields that differ from a record's defaults.
add_compile_options(-Wall -Wextra -Wpedantic -Werror
                    -Wno-unknown-warning-option -Wno-missing-designated-field-initializers)
add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH)

option(PARCELORY_SANITIZE "Build with the address and undefined-behavior sanitizers" OFF)
if(PARCELORY_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize=function -fno-omit-frame-pointer
                        -fno-sanitize-recover=undefined -gline-tables-only) # a report names lines, no variables
    add_link_options(-fsanitize=address,undefined -fno-sanitize=function)
endif()
