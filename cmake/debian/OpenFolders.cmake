# The folders of the package may be entered by everybody, whatever the umask of whoever makes it is.
file(CHMOD_RECURSE "${CPACK_TEMPORARY_DIRECTORY}/opt" DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
