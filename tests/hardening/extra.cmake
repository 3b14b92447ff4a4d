# The hardening program sees every allocation the library makes: the library's calls of
# malloc, calloc, realloc, aligned_alloc and free are routed through the test's own wrappers
# (hardening.cpp), which count them and fail the one a test picks. Only the library linked
# into this program is affected; the shared library stays untouched.
target_link_options(${QNUM_TEST_TARGET} PRIVATE
  -Wl,--wrap=malloc,--wrap=calloc,--wrap=realloc,--wrap=aligned_alloc,--wrap=free)
add_dependencies(${QNUM_TEST_TARGET} qnummath)
target_compile_definitions(${QNUM_TEST_TARGET} PRIVATE
  QNUM_SHARED_LIBRARY="$<TARGET_FILE:qnummath>" QNUM_HEADER="${PROJECT_SOURCE_DIR}/include/qnummath.h")
