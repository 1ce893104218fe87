# Writes the MCFG files of all tool chains into `folder`, for an installation in `root`.
set(MCFG_TEMPLATE "${CMAKE_CURRENT_LIST_DIR}/orvane/make_linux.mcfg.in")

function(write_mcfg ORVANE_ROOT folder MCFG_NAME MCFG_TOOLS MCFG_CC)
  configure_file("${MCFG_TEMPLATE}" "${folder}/${MCFG_NAME}" @ONLY)
endfunction()

function(write_all_mcfg root folder)
  write_mcfg("${root}" "${folder}" make_linux.mcfg "the C compiler of the system" cc)
  write_mcfg("${root}" "${folder}" make_linux_tcc.mcfg "tcc and, for your own sources, cc"
             "\"$(if $(filter $@,$(GENERATED_OBJS)),tcc,cc)\"")
endfunction()
