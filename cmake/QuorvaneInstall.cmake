# Where things are installed to.
include(GNUInstallDirs)

# What the window reads. The programs look for it in the product's own folder, wherever they are installed themselves;
# resources/system links it there.
set(quorvane_data_folder "${CMAKE_INSTALL_DATADIR}/quorvane-configuration")
