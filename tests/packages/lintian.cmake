# Holds the packages that the test packages has made against Debian's policy; a warning fails as an error does.

include(${CMAKE_CURRENT_LIST_DIR}/../support/run.cmake)

file(GLOB packages ${PACKAGES}/*.deb)
run(${LINTIAN} --fail-on error,warning ${packages})
