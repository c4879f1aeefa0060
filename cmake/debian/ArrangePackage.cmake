# What the package has beside the installed tree: the command's link, its papers, and the mark of a tree for many users.
set(root "${CPACK_TEMPORARY_DIRECTORY}")
set(papers "${root}/usr/share/doc/${CPACK_PACKAGE_NAME}")
file(MAKE_DIRECTORY "${root}/usr/bin" "${papers}")
file(CREATE_LINK ../lib/kalvento/bin/kalvento "${root}/usr/bin/kalvento" SYMBOLIC)
file(COPY "${CPACK_KALVENTO_DEBIAN}/copyright" DESTINATION "${papers}")
file(WRITE "${root}/usr/lib/kalvento/installed-for-all"
    "The program writes nothing here: each user's files lie in $XDG_DATA_HOME/kalvento.\n")

# The packager's form of the changes: the present version and where its changes are told, with the date of its source.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE "${papers}/changelog" "kalvento (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * See CHANGELOG.md.gz beside this file.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
file(COPY "${CPACK_KALVENTO_CHANGES}" DESTINATION "${papers}")
execute_process(COMMAND gzip -9 -n changelog CHANGELOG.md WORKING_DIRECTORY "${papers}" COMMAND_ERROR_IS_FATAL ANY)

# Everybody may read it and only its owner change it, whatever the umask of whoever makes it is.
file(GLOB_RECURSE files LIST_DIRECTORIES true "${root}/usr/*")
foreach(file IN LISTS files)
    if(IS_SYMLINK "${file}")
        continue()
    endif()
    set(rights OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    if(IS_DIRECTORY "${file}" OR file MATCHES "/bin/[^/]*$|/kalvento_plugin_trial$")
        list(APPEND rights OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)
    endif()
    file(CHMOD "${file}" PERMISSIONS ${rights})
endforeach()
file(CHMOD "${root}/usr" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
