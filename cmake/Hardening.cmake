# What makes a mistake in the program harder to exploit, for builds without sanitizers. Each is taken where compiler and
# machine have it; `packaging/check package` reads from the finished program that they are there.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)
include(CheckPIESupported)

check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

function(tidemark_harden flag)
  string(MAKE_C_IDENTIFIER "TIDEMARK_HAS${flag}" result)
  check_cxx_compiler_flag("${flag}" ${result})
  if(${result})
    target_compile_options(tidemark_options INTERFACE "${flag}")
  endif()
endfunction()

if(NOT TIDEMARK_SANITIZE)
  tidemark_harden(-fstack-protector-strong)
  tidemark_harden(-fstack-clash-protection)
  tidemark_harden(-fcf-protection=full) # x86
  tidemark_harden(-mbranch-protection=standard) # ARM
  # The third level checks sizes that are known at run time only; GCC 12 and Clang 9 were the first to have it.
  check_cxx_source_compiles(
    "int main(int, char** argv) { return __builtin_dynamic_object_size(argv, 0) == 0; }"
    TIDEMARK_HAS_DYNAMIC_OBJECT_SIZE)
  set(level $<IF:$<BOOL:${TIDEMARK_HAS_DYNAMIC_OBJECT_SIZE}>,3,2>)
  # It does nothing without optimisation but warn.
  target_compile_options(tidemark_options
                         INTERFACE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=${level}>)
  target_link_options(tidemark_options INTERFACE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
  # Control-flow protection is noted in a program only when each of its objects has it, and Debian's start files do not.
  check_linker_flag(CXX LINKER:-z,ibt,-z,shstk TIDEMARK_HAS_CONTROL_FLOW_NOTE)
  if(TIDEMARK_HAS_CONTROL_FLOW_NOTE)
    target_link_options(tidemark_options INTERFACE LINKER:-z,ibt,-z,shstk)
  endif()
endif()
