# Run by CPack on the files of each package before they are packed: adds the changelog, compresses what Debian wants
# compressed. A run is repeatable with SOURCE_DATE_EPOCH.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX})
  set(changelog ${root}/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}/changelog.Debian)
  file(WRITE ${changelog}
"${CPACK_DEBIAN_PACKAGE_SOURCE} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  file(GLOB manuals ${root}/share/man/man1/*.1)
  execute_process(COMMAND gzip -9 -n -f ${changelog} ${manuals} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
