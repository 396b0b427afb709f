cmake --preset release
cmake --build --preset release
cmake --install build/release --prefix "$HOME/coordtrans"
