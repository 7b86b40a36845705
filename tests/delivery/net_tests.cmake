# The HTTPS, via-manager and dial-up deliveries against real servers on loopback (the HTTPS
# server of https_server.py with a test CA, tinyproxy, a TCP listener) and a pseudo-terminal
# playing the modem. The servers are part of the test support, shared with the HTTPS benchmark.
add_library(netdeliverytest STATIC ${CMAKE_CURRENT_LIST_DIR}/net_servers.cpp)
target_include_directories(netdeliverytest PUBLIC ${CMAKE_CURRENT_LIST_DIR})
target_link_libraries(netdeliverytest PUBLIC deliverytestsupport util)

zol_add_test(net_delivery_test
    ${CMAKE_CURRENT_LIST_DIR}/https_delivery_test.cpp
    ${CMAKE_CURRENT_LIST_DIR}/manager_delivery_test.cpp
    ${CMAKE_CURRENT_LIST_DIR}/dialup_delivery_test.cpp)
target_link_libraries(net_delivery_test PRIVATE netdeliverytest zolrecords)

# The same deliveries reached through ZOLamsadm in a pseudo-terminal.
if(TARGET zolscreentest)
    zol_add_test(net_screen_test ${CMAKE_CURRENT_LIST_DIR}/net_screen_test.cpp)
    target_link_libraries(net_screen_test PRIVATE netdeliverytest zolscreentest)
    target_include_directories(net_screen_test PRIVATE ${CMAKE_SOURCE_DIR}/tests/vantrel)
endif()
