# The installation folders.
include(GNUInstallDirs)

# The data that the window reads. The programs search the product's own folder for it, wherever they are installed;
# resources/system links it there.
set(quorvane_data_folder "${CMAKE_INSTALL_DATADIR}/quorvane-configuration")
