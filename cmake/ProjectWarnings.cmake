# Warnings are errors on everything this repository compiles itself (clang and GCC alike).
function(vexal_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror -Wshadow -Wformat=2
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>)
endfunction()
