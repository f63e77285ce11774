# What keeps programs small: of our own libraries a program is given what it uses, and what no other file asks for is no
# symbol of it. Not under sanitizers, which look for functions of the program by name.

if(IPOD_SANITIZER)
    function(optimise_as_a_whole)
    endfunction()
    return()
endif()

# In every configuration: what a library of ours gives to others says so itself.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

set(small $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
target_compile_options(project_plain_flags INTERFACE
    $<${small}:-ffunction-sections> $<${small}:-fdata-sections>)
target_link_options(project_plain_flags INTERFACE
    $<${small}:LINKER:-O1> $<${small}:LINKER:--as-needed> $<${small}:LINKER:--gc-sections>)

# optimise_as_a_whole(PROGRAM LIBRARY...): the program's link compiles these libraries of ours once more, together. All
# other programs are linked with the same libraries as they are, which takes a tenth of the time.
function(optimise_as_a_whole program)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        foreach(target IN LISTS ARGV)
            target_compile_options(${target} PRIVATE $<${small}:-flto=auto> $<${small}:-ffat-lto-objects>)
        endforeach()
        set_target_properties(${program} PROPERTIES IPOD_OPTIMISED_AS_A_WHOLE ON)
    endif()
endfunction()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set(as_a_whole $<BOOL:$<TARGET_PROPERTY:IPOD_OPTIMISED_AS_A_WHOLE>>)
    target_link_options(project_plain_flags INTERFACE $<${small}:$<IF:${as_a_whole},-flto=auto,-fno-lto>>)
endif()
