# Fails when PROGRAM needs a library that Windows 10 does not bring along itself.
cmake_minimum_required(VERSION 3.25)
set(system_libraries
  advapi32 bcrypt comctl32 comdlg32 crypt32 gdi32 gdiplus imm32 kernel32 msimg32 msvcrt normaliz ole32 oleacc oleaut32
  rpcrt4 secur32 shell32 shlwapi user32 uuid uxtheme version winhttp winmm winspool.drv wldap32 ws2_32)
execute_process(COMMAND ${OBJDUMP} -p ${PROGRAM} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "DLL Name: [^\n]+" imports "${headers}")
if(NOT imports)
  message(FATAL_ERROR "${PROGRAM} seems to import nothing at all")
endif()
foreach(import IN LISTS imports)
  string(REGEX REPLACE "DLL Name: |\\.dll$" "" name "${import}")
  string(TOLOWER "${name}" name)
  string(REGEX REPLACE "\\.dll$" "" name "${name}")
  if(NOT name IN_LIST system_libraries)
    message(FATAL_ERROR "${PROGRAM} needs ${name}, which is no library of the system")
  endif()
endforeach()
