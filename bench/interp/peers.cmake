# The spline benchmark compares with GSL's splines (Debian's libgsl-dev).
find_library(QNUM_GSL gsl)
find_library(QNUM_GSLCBLAS gslcblas)
target_link_libraries(${QNUM_BENCH_TARGET} PRIVATE ${QNUM_GSL} ${QNUM_GSLCBLAS} m)
