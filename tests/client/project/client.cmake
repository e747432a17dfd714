# The client's CMakeLists.txt: it is copied, with its sources, out of this tree before it is used.
cmake_minimum_required(VERSION 3.25)
project(RastrelClient LANGUAGES CXX)

find_package(Rastrel ${RASTREL_VERSION} EXACT REQUIRED)

add_executable(client client.cpp)
target_link_libraries(client PRIVATE Rastrel::rastrel)

add_executable(print_ticket print_ticket.cpp)
target_link_libraries(print_ticket PRIVATE Rastrel::rastrel)
