// A module that exists only for its resources (version_fixture.rc,
// version_notrans.rc).
extern "C" __declspec(dllexport) int VersionFixtureModule() { return 1; }
