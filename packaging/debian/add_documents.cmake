# Completes the file trees from which CPack makes packages: adds licence and changelog, and compresses texts, as Debian
# requires.
file(READ ${CPACK_LMCALTAB_SOURCE}/LICENSE licence)
file(READ ${CPACK_LMCALTAB_SOURCE}/THIRD_PARTY_NOTICES.md notices)
file(READ ${CPACK_LMCALTAB_SOURCE}/camera_library/output/caption_font_license.txt font_licence)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(tree ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr/share)
  set(documents ${tree}/doc/${CPACK_LMCALTAB_${component}_PACKAGE})
  file(WRITE ${documents}/copyright "${licence}
${notices}
On Debian systems, the licences of the GNU project are /usr/share/common-licenses/GPL-2,
/usr/share/common-licenses/GPL-3, /usr/share/common-licenses/LGPL-2.1 and /usr/share/common-licenses/LGPL-3.

The font's licence:

${font_licence}")
  configure_file(${CPACK_LMCALTAB_CHANGELOG} ${documents}/changelog COPYONLY)
  file(REMOVE ${documents}/LICENSE ${documents}/caption_font_license.txt)
  file(GLOB texts ${documents}/changelog ${documents}/*.md ${tree}/man/man1/*.1)
  execute_process(COMMAND gzip -9n ${texts} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
