# What keeps programs small: of our own libraries a program is given what it uses, and what no other file asks for is no
# symbol of it. Not under sanitizers, which look for functions of the program by name.

if(IPOD_SANITIZER)
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
