-- Deliberately does not compile, to show how a failed run looks.
print("missing a closing parenthesis"
