# Run by CPack between the installation of the components into its own directory and the making of the packages, which
# hold their man pages and changelogs compressed.
file(GLOB_RECURSE documents ${CPACK_TEMPORARY_DIRECTORY}/*)
list(FILTER documents INCLUDE REGEX "/share/man/man[18]/|/changelog$")
foreach(document IN LISTS documents)
  execute_process(COMMAND gzip --best --no-name ${document} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
