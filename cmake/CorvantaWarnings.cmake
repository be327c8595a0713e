# Warnings are errors everywhere, on our own targets only (Qt's headers come in as system headers).
set(CORVANTA_WARNING_FLAGS -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Werror)

function(corvanta_enable_warnings target)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /WX)
    else()
        target_compile_options(${target} PRIVATE ${CORVANTA_WARNING_FLAGS})
    endif()
endfunction()
