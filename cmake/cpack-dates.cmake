# CPack runs this script before it packs a folder. If SOURCE_DATE_EPOCH is set, the script sets the date of all files to
# it, so that packages that are built at different times have the same bytes.

if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND find ${CPACK_TEMPORARY_DIRECTORY} -exec touch -h -d @$ENV{SOURCE_DATE_EPOCH} {} +
    COMMAND_ERROR_IS_FATAL ANY)
endif()
