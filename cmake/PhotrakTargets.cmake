# Common flags, one static library per floor, and the copy of the catalogue beside the executable.

add_library(photrak_flags INTERFACE)
target_include_directories(photrak_flags INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
target_compile_options(photrak_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Werror
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>
  # What the products compute may not change its value or sign unseen; tests count as they like.
  $<$<NOT:$<BOOL:$<TARGET_PROPERTY:PHOTRAK_TEST>>>:-Wconversion -Wsign-conversion>
  # A wide vector passed between functions compiled for one instruction set is our own business.
  -Wno-psabi
  # One rounding per operation on every machine: results may not depend on contraction.
  -ffp-contract=off)
target_compile_options(photrak_flags INTERFACE $<$<CONFIG:Debug>:-g1>)
# What a release adds against faults that a hostile file could use; cmake/CheckHardening.cmake looks whether
# the programs have it.
if(NOT PHOTRAK_SANITIZE)
  target_compile_options(photrak_flags INTERFACE
    $<$<CONFIG:Release>:-fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    target_compile_options(photrak_flags INTERFACE $<$<CONFIG:Release>:-fcf-protection>)
  endif()
  target_link_options(photrak_flags INTERFACE $<$<CONFIG:Release>:LINKER:-z,relro,-z,now,-z,noexecstack>)
endif()
include(CheckPIESupported)
check_pie_supported()
# What is under test is optimized even in Debug, the tests' own code is compiled quickly instead.
target_compile_options(photrak_flags INTERFACE
  $<IF:$<BOOL:$<TARGET_PROPERTY:PHOTRAK_TEST>>,-O0,$<$<CONFIG:Debug>:-O1>>)
if(PHOTRAK_SANITIZE)
  target_compile_definitions(photrak_flags INTERFACE PHOTRAK_SANITIZED)
  target_compile_options(photrak_flags INTERFACE
    -fsanitize=${PHOTRAK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(photrak_flags INTERFACE -fsanitize=${PHOTRAK_SANITIZE})
endif()
if(PHOTRAK_COVERAGE)
  target_compile_options(photrak_flags INTERFACE --coverage)
  target_link_options(photrak_flags INTERFACE --coverage)
endif()

# The hot loops of numeric/ are compiled once for each vector width; numeric/simd.cpp chooses. They
# are written in vectors already: what the compiler would bundle on top only costs moves.
function(photrak_set_instruction_sets)
  set(plain -fno-tree-slp-vectorize)
  set(avx2)
  set(avx512)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    set(avx2 -mavx2)
    set(avx512 -mavx512f -mavx512dq -mavx512vl)
  endif()
  foreach(level plain avx2 avx512)
    set_source_files_properties(${PROJECT_SOURCE_DIR}/src/numeric/simd_${level}.cpp
      PROPERTIES COMPILE_OPTIONS "${plain};${${level}}")
  endforeach()
endfunction()

# photrak_add_floors(NAMES...): a library photrak_<floor> for each folder of src/ that has sources.
function(photrak_add_floors)
  set(below photrak_flags)
  foreach(floor ${ARGN})
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${floor}/*.cpp)
    if(sources)
      add_library(photrak_${floor} STATIC ${sources})
      photrak_set_instruction_sets()
      target_link_libraries(photrak_${floor} PUBLIC ${below})
      set(below photrak_${floor})
    endif()
  endforeach()
  find_package(Threads REQUIRED)
  if(TARGET photrak_platform)
    target_link_libraries(photrak_platform PUBLIC ${CMAKE_DL_LIBS} Threads::Threads)
  endif()
  # The highest floor that stands: what the program and the tests link.
  add_library(photrak_all INTERFACE)
  target_link_libraries(photrak_all INTERFACE ${below})
endfunction()

# The program finds models/ and superblocks/ beside its own file. The executables land in build/bin.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
function(photrak_copy_catalogue)
  file(GLOB_RECURSE files CONFIGURE_DEPENDS 
    ${PROJECT_SOURCE_DIR}/catalogue/* ${PROJECT_SOURCE_DIR}/examples/* ${PROJECT_SOURCE_DIR}/docs/*.md)
  set(stamp ${PROJECT_BINARY_DIR}/catalogue.stamp)
  add_custom_command(OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/bin
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${PROJECT_SOURCE_DIR}/catalogue/models ${PROJECT_BINARY_DIR}/bin/models
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${PROJECT_SOURCE_DIR}/catalogue/icons ${PROJECT_BINARY_DIR}/bin/models
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${PROJECT_SOURCE_DIR}/catalogue/superblocks ${PROJECT_BINARY_DIR}/bin/superblocks
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${PROJECT_SOURCE_DIR}/examples ${PROJECT_BINARY_DIR}/bin/examples
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${PROJECT_SOURCE_DIR}/docs/guide ${PROJECT_BINARY_DIR}/bin/help/guide
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${PROJECT_SOURCE_DIR}/docs/models ${PROJECT_BINARY_DIR}/bin/help/models
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${PROJECT_SOURCE_DIR}/docs/formats ${PROJECT_BINARY_DIR}/bin/help/formats
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${files} VERBATIM)
  add_custom_target(photrak_catalogue ALL DEPENDS ${stamp})
endfunction()
