extern "C" int pj_transform();

int pj_transform() { return 0; }
