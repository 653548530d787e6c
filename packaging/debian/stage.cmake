# SPDX-License-Identifier: MIT
# Adds to the files of the package what only Debian asks for. Run by CPack, before it packs.
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
set(doc ${share}/doc/strandloom)
file(MAKE_DIRECTORY ${doc})
file(COPY_FILE ${CMAKE_CURRENT_LIST_DIR}/copyright ${doc}/copyright)
file(COPY_FILE ${CMAKE_CURRENT_LIST_DIR}/changelog ${doc}/changelog.Debian)
execute_process(COMMAND gzip -9n ${doc}/changelog.Debian ${share}/man/man1/strandloom.1
    COMMAND_ERROR_IS_FATAL ANY)
if(DEFINED ENV{SOURCE_DATE_EPOCH}) # CPack itself does not heed it
    execute_process(COMMAND find ${CPACK_TEMPORARY_INSTALL_DIRECTORY}
        -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
        COMMAND_ERROR_IS_FATAL ANY)
endif()
