# CPack reads this before it creates the packages. All files get the same time, so that the same sources always
# give the same bytes.
execute_process(
  COMMAND find ${CPACK_TEMPORARY_INSTALL_DIRECTORY}
    -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
  COMMAND_ERROR_IS_FATAL ANY)
