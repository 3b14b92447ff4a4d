# The zero finder runs beside GSL's Brent solver.
find_library(QNUM_GSL NAMES gsl REQUIRED)
find_library(QNUM_GSLCBLAS NAMES gslcblas REQUIRED)
target_link_libraries(${QNUM_BENCH_TARGET} PRIVATE ${QNUM_GSL} ${QNUM_GSLCBLAS})
