# The solver benchmarks run LAPACKE (on OpenBLAS's LAPACK) beside ours.
find_library(QNUM_LAPACKE NAMES lapacke)
find_library(QNUM_LAPACK NAMES lapack PATHS /usr/lib/x86_64-linux-gnu/openblas-pthread)
if(QNUM_LAPACKE AND QNUM_OPENBLAS)
  target_link_libraries(${QNUM_BENCH_TARGET} PRIVATE ${QNUM_LAPACKE} ${QNUM_LAPACK} ${QNUM_OPENBLAS})
  target_compile_definitions(${QNUM_BENCH_TARGET} PRIVATE QNUM_HAVE_LAPACKE=1)
endif()
