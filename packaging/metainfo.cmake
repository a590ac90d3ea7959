# SPDX-License-Identifier: GPL-3.0-or-later
# Writes the AppStream metainfo: ostrine_metainfo(<homepage> <output>). PROJECT_VERSION and OSTRINE_RELEASE_DATE are
# set by the caller. Pictures in it must have web addresses, so there are none where the homepage is empty.
function(ostrine_metainfo homepage output)
    set(OSTRINE_PICTURES)
    if(homepage)
        set(images ${homepage}/docs/images)
        set(OSTRINE_PICTURES "
  <url type=\"homepage\">${homepage}</url>
  <screenshots>
    <screenshot type=\"default\">
      <caption>The operator's window after a session</caption>
      <image>${images}/operator-window.png</image>
    </screenshot>
    <screenshot>
      <caption>The child's window, waiting for an answer</caption>
      <image>${images}/subject-answering.png</image>
    </screenshot>
    <screenshot>
      <caption>Tokens that have been checked</caption>
      <image>${images}/tools-findings.png</image>
    </screenshot>
  </screenshots>")
    endif()
    configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/ostrine.metainfo.xml.in ${output} @ONLY)
endfunction()
