# Reads off a program's file what the release flags promise: position independent, addresses bound and write-protected
# before the program starts, no executable stack, guarded stack frames, checked copies, checked jumps.
# Usage: cmake -DPROGRAM=FILE -P cmake/CheckHardening.cmake
find_program(READELF readelf REQUIRED)
execute_process(COMMAND ${READELF} -hldnsW ${PROGRAM} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)

set(missing)
function(want what pattern)
  if(NOT text MATCHES "${pattern}")
    set(missing ${missing} ${what} PARENT_SCOPE)
  endif()
endfunction()
want("position independence" "Type: +DYN")
want("write protection after relocation" "GNU_RELRO")
want("binding before the start" "FLAGS_1.*NOW")
want("a stack without code" "GNU_STACK[^\n]* RW +0x")
want("stack guards" "__stack_chk_fail")
want("checked copies" "__(memcpy|memmove|fprintf|snprintf|printf|read)_chk")
# Debian's start-up objects do not carry the note that would mark the whole program, so a function is looked at.
if(text MATCHES "Machine: +Advanced Micro Devices X86-64")
  find_program(OBJDUMP objdump REQUIRED)
  execute_process(COMMAND ${OBJDUMP} -d --disassemble=main ${PROGRAM} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
  want("checked jumps" "endbr64")
endif()
if(missing)
  message(FATAL_ERROR "${PROGRAM} is without: ${missing}")
endif()
