# parcelory_folder(USES records core): makes a library of every source below the calling folder and links it to the
# libraries of exactly the folders that its sources include. tools/check-layers reads these calls and checks every
# include against them. A file named *Mac or *Linux is built on that system only. PRECOMPILED names headers, from src, that
# most sources of the folder include and that are slow to compile.
function(parcelory_folder)
    cmake_parse_arguments(arg "" "" "USES;PRECOMPILED" ${ARGN})
    get_filename_component(folder "${CMAKE_CURRENT_SOURCE_DIR}" NAME)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS *.h *.cpp *.mm)
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
    if(APPLE)
        list(FILTER sources EXCLUDE REGEX "Linux\\.(h|cpp)$")
    else()
        list(FILTER sources EXCLUDE REGEX "Mac\\.(h|cpp|mm)$")
    endif()
    add_library(parcelory_${folder} STATIC ${sources})
    list(TRANSFORM arg_USES PREPEND parcelory_ OUTPUT_VARIABLE libraries)
    target_link_libraries(parcelory_${folder} PUBLIC ${libraries})
    target_include_directories(parcelory_${folder} PUBLIC "${PROJECT_SOURCE_DIR}/src" "${PROJECT_SOURCE_DIR}")
    list(TRANSFORM arg_PRECOMPILED PREPEND "${PROJECT_SOURCE_DIR}/src/")
    target_precompile_headers(parcelory_${folder} PRIVATE <QString> <QList> <QDateTime> <QUuid> <optional> <functional>
                              ${arg_PRECOMPILED})
endfunction()
