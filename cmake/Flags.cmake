# abi_flags: what both sides of the library's border must be compiled with, because std::string and
# std::vector cross it as they are. room_flags: the warnings, for everything of ours.
add_library(abi_flags INTERFACE)
target_compile_features(abi_flags INTERFACE cxx_std_17)

add_library(room_flags INTERFACE)
target_link_libraries(room_flags INTERFACE abi_flags)
target_compile_options(room_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual
  -Wcast-align -Wformat=2 -Wundef -Wimplicit-fallthrough -Wmissing-declarations)
if(TARVEX_WERROR)
  target_compile_options(room_flags INTERFACE -Werror)
endif()
target_include_directories(room_flags INTERFACE
  "${CMAKE_SOURCE_DIR}" "${CMAKE_BINARY_DIR}/generated")

set(TARVEX_SANITIZE "" CACHE STRING "Sanitizers for the whole build, e.g. address,undefined")
if(TARVEX_SANITIZE)
  add_compile_options(-fsanitize=${TARVEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TARVEX_SANITIZE})
endif()
