/*
 * srvinfo_api.h: SRVINFO.DLL, which clears the remote report service's set-up once the service
 * has been ended with a stop report.
 */
#ifndef ZOL_SRVINFO_API_H
#define ZOL_SRVINFO_API_H

#ifdef __cplusplus
extern "C" {
#endif

/* Writes every set-up value of the service (vntinit_table.h) back to its initial value in one
 * transaction, so that the service asks for a key floppy again. Nonzero when they were all
 * written; 0 when nothing was (the store keeps what it held). */
typedef int VX_Clear_EMP_info_Data_fn(void);

#ifdef __cplusplus
}
#endif

#endif /* ZOL_SRVINFO_API_H */
