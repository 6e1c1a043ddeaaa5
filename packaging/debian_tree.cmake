# Run by cpack between installation and packing: what Debian asks of a package and a plain installation need not have.
# Manual pages and the changelog are compressed, without a time stamp so that the package repeats; the licence is named
# `copyright`.
set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX})
set(documents ${root}/share/doc/${CPACK_PACKAGE_NAME})

file(RENAME ${documents}/LICENSE ${documents}/copyright)

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${documents}/changelog
"latbox (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Built from the tree; see CHANGELOG.md for what is new.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")

file(GLOB pages ${root}/share/man/man1/*.1)
execute_process(COMMAND gzip -9n ${pages} ${documents}/changelog COMMAND_ERROR_IS_FATAL ANY)
