# SPDX-License-Identifier: GPL-3.0-or-later
# Adds what only a Debian package has to the files that CPack has collected: compressed man pages, both changelogs and
# the copyright.
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
set(doc ${share}/doc/ostrine)

configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${doc}/copyright COPYONLY NO_SOURCE_PERMISSIONS)
configure_file(${CPACK_OSTRINE_CHANGELOG} ${doc}/changelog COPYONLY NO_SOURCE_PERMISSIONS)

execute_process(COMMAND date --utc --rfc-email --date=${CPACK_OSTRINE_RELEASE_DATE}
    OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${doc}/changelog.Debian @ONLY NO_SOURCE_PERMISSIONS)

file(GLOB pages ${share}/man/man1/*.1)
execute_process(COMMAND gzip -9 --no-name --force ${pages} ${doc}/changelog ${doc}/changelog.Debian
    COMMAND_ERROR_IS_FATAL ANY)
