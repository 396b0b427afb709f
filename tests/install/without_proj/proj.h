#error "a user of the library's headers needs no headers of PROJ"
