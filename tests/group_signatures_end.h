#undef DAL_SEND
#undef DAL_OP
#undef DAL_STATIC
