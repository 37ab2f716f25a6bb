# cpp-httplib as the target cpp_httplib: by its own CMake package where that is installed (Homebrew, newer Debian
# releases), otherwise by pkg-config (Debian 12).
add_library(cpp_httplib INTERFACE)
find_package(httplib CONFIG QUIET)
if(TARGET httplib::httplib)
    target_link_libraries(cpp_httplib INTERFACE httplib::httplib)
else()
    pkg_check_modules(HTTPLIB REQUIRED IMPORTED_TARGET cpp-httplib)
    target_link_libraries(cpp_httplib INTERFACE PkgConfig::HTTPLIB)
endif()
