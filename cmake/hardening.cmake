# tavmir_harden(TARGET): links a library or program so that, once loaded, its tables are read-only
# and its stack does not execute, and so that nothing is left unresolved until a call on a
# running panel needs it.
function(tavmir_harden target)
  target_link_options(${target} PRIVATE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,text)
  if(NOT TAVMIR_SANITIZE)
    # A sanitizer's run-time is found in the program only when that is started.
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
endfunction()
