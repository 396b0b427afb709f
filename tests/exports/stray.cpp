namespace CoordinateTransformation {

int stray();
int stray() { return 0; }

}  // namespace CoordinateTransformation
