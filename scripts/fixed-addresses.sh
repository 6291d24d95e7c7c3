# To be sourced. The sanitizers keep their shadow memory at fixed addresses, which a kernel that randomises much may have
# given away; a command that is run by "${fixed_addresses[@]}" gets them, where that is possible.
fixed_addresses=()
if setarch "$(uname -m)" -R true 2>/dev/null; then
    fixed_addresses=(setarch "$(uname -m)" -R)
fi
