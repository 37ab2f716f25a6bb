// Fills in the sign-in form and submits it; returns "submitted" or what is missing. The input events are for pages that
// listen to typing. A redirect may have led to another page: only pages of the back office get the password.
(function (user, pass, base) {
    if (location.origin !== new URL(base).origin)
        return 'wrong-address';
    const passwordField = document.querySelector('input[type=password]');
    if (!passwordField)
        return 'no-password-field';
    const form = passwordField.form || document.forms[0];
    // The property, not the attribute: an input without a type is a text field, too.
    const userField = [...(form || document).querySelectorAll('input')].find(
        input => input.type === 'email' || input.type === 'text');
    if (!userField)
        return 'no-user-field';
    userField.value = user;
    passwordField.value = pass;
    for (const field of [userField, passwordField])
        field.dispatchEvent(new Event('input', {bubbles: true}));
    if (!form)
        return 'no-form';
    if (form.requestSubmit)
        form.requestSubmit();
    else
        form.submit();
    return 'submitted';
})
