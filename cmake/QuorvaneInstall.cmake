# Where things are installed to.
include(GNUInstallDirs)
set(quorvane_document_folder "${CMAKE_INSTALL_DATAROOTDIR}/doc/quorvane-configuration")

# The programs look for the user guide and the icon of notices in the product's own folder, wherever they are installed
# themselves. It stands outside any prefix, so it is a component of its own, which a plain install leaves out:
#
#     cmake --install BUILD --prefix /usr             # programs, manual pages, desktop files: below the prefix only
#     cmake --install BUILD --component product       # the product's folder; DESTDIR is put in front as usual
set(QUORVANE_PRODUCT_FOLDER "/Library/Application Support/Quorvane" CACHE STRING
    "The product's folder, where the component \"product\" is installed to")

# quorvane_install_product_files(FILE...)
function(quorvane_install_product_files)
    install(FILES ${ARGN} DESTINATION "${QUORVANE_PRODUCT_FOLDER}" COMPONENT product EXCLUDE_FROM_ALL)
endfunction()
