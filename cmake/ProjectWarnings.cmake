# Warnings are errors on everything this repository compiles itself.
function(vexal_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()
