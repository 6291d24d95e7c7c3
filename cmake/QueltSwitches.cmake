# The module reads two switches from the environment when it is loaded; only their presence counts. Each setting has
# the name here that the conformance cases know it by.
set(settings plain migRen optimization both)
set(environment_plain "CGE_MigRen=unset:" "CFG_DA_Migration_Optimization=unset:")
set(environment_migRen "CGE_MigRen=set:" "CFG_DA_Migration_Optimization=unset:")
set(environment_optimization "CGE_MigRen=unset:" "CFG_DA_Migration_Optimization=set:")
set(environment_both "CGE_MigRen=set:0" "CFG_DA_Migration_Optimization=set:0")
