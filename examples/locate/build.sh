cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$HOME/coordtrans"
cmake --build build
./build/locate "$HOME/coordtrans/share/CoordinateTransformation/proj"
