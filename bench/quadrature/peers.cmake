# The quadrature benchmark times GSL's QUADPACK port beside our routines.
find_library(QNUM_GSL gsl REQUIRED)
find_library(QNUM_GSLCBLAS gslcblas REQUIRED)
target_link_libraries(${QNUM_BENCH_TARGET} PRIVATE ${QNUM_GSL} ${QNUM_GSLCBLAS})
target_include_directories(${QNUM_BENCH_TARGET} PRIVATE ${PROJECT_SOURCE_DIR}/tests/quadrature)
target_compile_definitions(${QNUM_BENCH_TARGET} PRIVATE QNUM_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/data")
