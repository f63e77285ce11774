# What makes a fault in a released program harder to use: in the release configurations, and not under
# sanitizers, which replace some of it and are disturbed by the rest. The service runs as root.

include(CheckCXXCompilerFlag)

if(IPOD_SANITIZER)
    return()
endif()

set(hardened $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
# Not every compiler has these for every processor.
foreach(flag IN ITEMS -fstack-protector-strong -fstack-clash-protection)
    string(MAKE_C_IDENTIFIER "IPOD_HAS${flag}" has_flag)
    check_cxx_compiler_flag(${flag} ${has_flag})
    if(${has_flag})
        target_compile_options(project_plain_flags INTERFACE $<${hardened}:${flag}>)
    endif()
endforeach()
# A level that the caller's own flags name stays.
if(NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
    target_compile_options(project_plain_flags INTERFACE
        $<${hardened}:-U_FORTIFY_SOURCE> $<${hardened}:-D_FORTIFY_SOURCE=2>)
endif()
target_compile_definitions(project_plain_flags INTERFACE $<${hardened}:_GLIBCXX_ASSERTIONS>)
# All functions are bound at load: one that the device manager's library lacks is told then, not when it is called.
target_link_options(project_plain_flags INTERFACE
    $<${hardened}:LINKER:-z,relro> $<${hardened}:LINKER:-z,now>)
