# Every optimization benchmark runs beside GLPK.
find_library(QNUM_GLPK NAMES glpk REQUIRED)
find_path(QNUM_GLPK_INCLUDE glpk.h REQUIRED)
target_include_directories(${QNUM_BENCH_TARGET} PRIVATE ${QNUM_GLPK_INCLUDE})
target_link_libraries(${QNUM_BENCH_TARGET} PRIVATE ${QNUM_GLPK})
