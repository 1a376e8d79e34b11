// A library named like orv_emb that has none of its functions: the plug-in
// must load it and take the fallbacks of the missing functions.
extern "C" __attribute__((visibility("default"))) int OrvEmbWithoutFunctions()
{
    return 0;
}
