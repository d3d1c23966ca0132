include("${CMAKE_CURRENT_LIST_DIR}/headers.cmake")
proreflax_add_headers(CLI11::CLI11 CLI)
