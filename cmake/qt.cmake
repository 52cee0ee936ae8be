# Target tavmir_qtcore: the QtCore that the driver is built against.
find_package(Qt5Core 5.15 REQUIRED)
add_library(tavmir_qtcore INTERFACE)
target_link_libraries(tavmir_qtcore INTERFACE Qt5::Core)
