# Boost.Math is header-only; glibc's libm comes with the toolchain.
find_package(Boost REQUIRED)
target_include_directories(${QNUM_BENCH_TARGET} PRIVATE ${Boost_INCLUDE_DIRS})
