cmake --preset release -DCMAKE_INSTALL_PREFIX=/usr && cmake --build build/release && (cd build/release && cpack)
