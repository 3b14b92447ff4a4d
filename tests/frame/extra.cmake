# Two programs of their own, for what only a separate program can show: one linked like a
# user's against the shared library (exit while threads work, the catalogue beside the
# library), and one that loads the library with dlopen only, so every dlclose unloads it.
add_executable(qnum_user_program ${CMAKE_CURRENT_LIST_DIR}/user_program.cpp)
target_link_libraries(qnum_user_program PRIVATE qnummath Threads::Threads)
add_executable(qnum_unload_program ${CMAKE_CURRENT_LIST_DIR}/unload_program.cpp)
target_include_directories(qnum_unload_program PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(qnum_unload_program PRIVATE Threads::Threads ${CMAKE_DL_LIBS})
add_dependencies(${QNUM_TEST_TARGET} qnum_user_program qnum_unload_program qnummath)
target_compile_definitions(${QNUM_TEST_TARGET} PRIVATE
  QNUM_USER_PROGRAM="$<TARGET_FILE:qnum_user_program>"
  QNUM_UNLOAD_PROGRAM="$<TARGET_FILE:qnum_unload_program>"
  QNUM_SHARED_LIBRARY="$<TARGET_FILE:qnummath>")
