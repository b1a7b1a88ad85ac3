# Checked buffers, guarded stacks, and what the loader can protect. What the toolchain offers differs by system.
if(NOT QUORVEL_HARDEN OR QUORVEL_SANITIZE OR NOT CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$")
  return()
endif()
set(QUORVEL_HARDENED ON)
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  add_compile_options(-fcf-protection)
endif()
if(WIN32)
  # Address layout and data execution are guarded by flags of the program's header; the stack is probed by default.
  # The checks of stacks and buffers come from a library of the compiler's, which the linker must be told of too.
  add_link_options(-fstack-protector-strong -Wl,--dynamicbase,--nxcompat,--high-entropy-va)
else()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  add_compile_options(-fstack-clash-protection)
  add_link_options(-pie -Wl,-z,relro,-z,now,-z,noexecstack)
endif()
