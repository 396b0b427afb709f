apt-get install g++ cmake ninja-build libproj-dev proj-data libboost-dev libboost-filesystem-dev libcli11-dev libeigen3-dev libsqlite3-dev libssl-dev nlohmann-json3-dev
