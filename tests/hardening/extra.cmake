# The library's calls of malloc, calloc, realloc, aligned_alloc and free are routed through
# the test's own wrappers (alloc_test.cpp), which count them and fail the one a test picks;
# the shared library stays untouched. Every object of the library is linked in and exported,
# so that the kernels can be found by the names the header declares.
target_sources(${QNUM_TEST_TARGET} PRIVATE $<TARGET_OBJECTS:qnummath_objects>)
target_link_options(${QNUM_TEST_TARGET} PRIVATE -rdynamic
  -Wl,--wrap=malloc,--wrap=calloc,--wrap=realloc,--wrap=aligned_alloc,--wrap=free)
target_link_libraries(${QNUM_TEST_TARGET} PRIVATE ${CMAKE_DL_LIBS})
add_dependencies(${QNUM_TEST_TARGET} qnummath)
target_compile_definitions(${QNUM_TEST_TARGET} PRIVATE
  QNUM_SHARED_LIBRARY="$<TARGET_FILE:qnummath>" QNUM_HEADER="${PROJECT_SOURCE_DIR}/include/qnummath.h")
