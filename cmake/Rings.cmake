# parcelory_ring(values Task.h Text.h Text.cpp …) puts files of the calling folder into a ring.
# tools/check-layers reads these calls, so a file's ring is written down exactly once.
function(parcelory_ring ring)
    list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    target_sources(parcelory_${ring} PRIVATE ${ARGN})
endfunction()
