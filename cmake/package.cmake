# What a package of Debian holds beside what is installed, in the form that it wants.
set(documents "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share/doc/orvane")
execute_process(COMMAND date -u -R -d "${CPACK_ORVANE_DATE}" OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE)
string(SUBSTRING "${CPACK_ORVANE_DATE}" 0 4 year)
file(WRITE "${documents}/copyright" "Copyright (c) ${year} the Orvane developers. All rights reserved.\nThis program comes without any warranty.\n")
file(WRITE "${documents}/changelog"
  "orvane (${CPACK_PACKAGE_VERSION}) unstable; urgency=low\n\n  * Version ${CPACK_PACKAGE_VERSION}.\n\n"
  " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
file(GLOB pages "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share/man/*/*.[1-9]")
execute_process(COMMAND gzip -9nf ${pages} "${documents}/changelog" COMMAND_ERROR_IS_FATAL ANY)
# whatever the umask of who makes it
file(CHMOD_RECURSE "${CPACK_TEMPORARY_INSTALL_DIRECTORY}" DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
file(CHMOD "${documents}/copyright" "${documents}/changelog.gz" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
